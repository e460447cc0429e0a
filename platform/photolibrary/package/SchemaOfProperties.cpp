#include "SchemaTables.h"

const char* SchemaTables::properties()
{
    return R"(
RKCharacterIndex uuid:v character:i stringIds:b / uuid character
RKExifNumberProperty versionId:i propertyKey:v numberProperty:d modDate:t / versionId
  numberProperty modDate !propertyKey,versionId
RKExifStringProperty versionId:i propertyKey:v stringId:i searchStringId:i modDate:t / versionId
  stringId searchStringId modDate !propertyKey,versionId
RKExif_RidIndexes indexName:v value:v ridIndex:b / !indexName,value
RKFaceProperty faceNameId:i propertyKey:v stringId:i searchStringId:i modDate:t / faceNameId
  stringId searchStringId modDate !propertyKey,faceNameId
RKIptcProperty versionId:i propertyKey:v stringId:i searchStringId:i modDate:t / versionId
  stringId searchStringId modDate !propertyKey,versionId
RKIptc_RidIndexes indexName:v value:v ridIndex:b / !indexName,value
RKOtherProperty versionId:i propertyKey:v propertyType:i stringId:i searchStringId:i
  numberProperty:d modDate:t / versionId propertyType stringId searchStringId numberProperty
  modDate !propertyKey,versionId,propertyType
RKOther_RidIndexes indexName:v value:v ridIndex:b / !indexName,value
RKPlace uuid:v defaultName:v recordLocator:i type:i isLowest:i userDefined:i geoVersion:d
  minLongitude:d maxLongitude:d minLatitude:d maxLatitude:d centroid:v createDate:t modDate:t
  boundaryData:b / uuid recordLocator type isLowest userDefined createDate modDate
RKPlaceName placeId:i language:v description:v / placeId language description
RKStatistic versionId:i propertyKey:v numberProperty:d modDate:t / versionId numberProperty
  modDate !propertyKey,versionId
RKUniqueString stringProperty:v / stringProperty
)";
}

const char* SchemaTables::imageProxies()
{
    return R"(
RKImageProxyState+ versionUuid:v versionId:i thumbnailsCurrent:i miniThumbnailsCurrent:i
  tinyThumbnailsCurrent:i fullSizePreviewUpToDate:i thumbnailCacheIndex:i thumbnailRendered:i
  previewRendered:i previewJpegHeight:i previewJpegWidth:i previewJpegRotation:i
  previewToMasterRotation:i fullSizePreviewPath:v fullSizePreviewChangeDate:t thumbnailPath:v
  thumbnailRotation:i thumbnailHeight:i thumbnailWidth:i thumbnailFilesize:i previewFilesize:i
  miniThumbnailRotation:i miniThumbnailHeight:i miniThumbnailWidth:i tinyThumbnailRotation:i
  tinyThumbnailHeight:i tinyThumbnailWidth:i microThumbnailRotation:i miniThumbnailPath:v
  miniThumbnailFilesize:i faceTilePath:v / versionUuid versionId thumbnailsCurrent
  miniThumbnailsCurrent tinyThumbnailsCurrent fullSizePreviewUpToDate thumbnailRendered
)";
}

const char* SchemaTables::bigBlobs()
{
    return R"(
cgImageData uuid:key cgImageData:b
syncInfo uuid:key syncInfo:b
)";
}
