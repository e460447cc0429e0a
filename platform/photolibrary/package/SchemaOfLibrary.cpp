#include "SchemaTables.h"

namespace
{

constexpr const char* kLibrary = R"(
RKAdminData propertyArea:v propertyName:v propertyValue:v blobPropertyValue:b storedDataType:i
  persistAfterRebuild:i / propertyArea persistAfterRebuild !propertyName,propertyArea
RKAlbum+ uuid:v albumType:i albumSubclass:i serviceName:v serviceAccountName:v serviceFullName:v
  name:v folderUuid:v queryFolderUuid:v posterVersionUuid:v selectedTrackPathUuid:v
  sortKeyPath:v sortAscending:i customSortAvailable:i versionCount:i createDate:t isFavorite:i
  isInTrash:i isHidden:i isMagic:i publishSyncNeeded:i colorLabelIndex:i faceSortKeyPath:v
  recentUserChangeDate:t filterData:b queryData:b viewData:b selectedVersionIds:b / uuid
  albumSubclass serviceName folderUuid queryFolderUuid createDate isInTrash recentUserChangeDate
  name,folderUuid
RKAlbumVersion+ versionId:i albumId:i / versionId albumId,versionId
RKAttachment uuid:v attachedToClassType:i attachedToUuid:v fileVolumeUuid:v propertyKey:v
  filename:v fileIsReference:i isMissing:i isInTrash:i duration:d fileModificationDate:t
  filePath:v fileAliasData:b propertiesData:b / uuid attachedToUuid fileVolumeUuid propertyKey
  filename fileIsReference isInTrash
RKCustomSortOrder containerUuid:v purpose:v objectUuid:v orderNumber:i / containerUuid
  objectUuid purpose,containerUuid
RKFolder+ uuid:v folderType:i name:v parentFolderUuid:v implicitAlbumUuid:v posterVersionUuid:v
  automaticallyGenerateFullSizePreviews:i versionCount:i minImageTimeZoneName:v
  maxImageTimeZoneName:v minImageDate:t maxImageDate:t folderPath:v createDate:t isExpanded:i
  isHidden:i isHiddenWhenEmpty:i isFavorite:i isInTrash:i isMagic:i colorLabelIndex:i
  sortAscending:i sortKeyPath:v / uuid folderType parentFolderUuid folderPath createDate
  isInTrash isMagic name,parentFolderUuid
RKGroupsForMasters+ groupId:i masterId:i masterUuid:v relationshipType:i / groupId masterId
  masterUuid relationshipType
RKGroupsForVersions+ groupId:i versionId:i versionUuid:v relationshipType:i / groupId versionId
  versionUuid relationshipType
RKImageAdjustment uuid:v name:v versionUuid:v maskUuid:v adjIndex:i isEnabled:i data:b
  dbVersion:i / uuid name versionUuid maskUuid isEnabled
RKImageMask uuid:v createDate:t / uuid createDate
RKImportGroup uuid:v importYear:v importMonth:v importDay:v importTime:v name:v / uuid name
RKKeyword uuid:v name:v searchName:v parentId:i hasChildren:i shortcut:v / uuid name searchName
  parentId
RKKeywordForVersion versionId:i keywordId:i / versionId keywordId,versionId
RKKeyword_CharIndex uuid:v character:i stringIds:b / uuid character
RKMaster+ uuid:v name:v projectUuid:v importGroupUuid:v fileVolumeUuid:v alternateMasterUuid:v
  originalVersionUuid:v originalVersionName:v fileName:v type:v subtype:v fileIsReference:i
  isExternallyEditable:i isTrulyRaw:i isMissing:i hasAttachments:i hasNotes:i hasFocusPoints:i
  imagePath:v fileSize:i pixelFormat:i duration:d imageDate:t fileCreationDate:t
  fileModificationDate:t streamAssetId:v streamSourceUuid:v burstUuid:v imageHash:v
  originalFileName:v originalFileSize:i imageFormat:i importedBy:i createDate:t isInTrash:i
  faceDetectionState:i colorSpaceName:v colorSpaceDefinition:b fileAliasData:b / uuid
  projectUuid importGroupUuid fileVolumeUuid alternateMasterUuid fileName type fileIsReference
  isExternallyEditable fileSize fileCreationDate fileModificationDate streamAssetId
  streamSourceUuid burstUuid originalFileName originalFileSize imageFormat createDate isInTrash
  faceDetectionState
RKMasterGroup uuid:v relationshipType:i / uuid relationshipType
RKNote uuid:v attachedToClassType:i attachedToUuid:v propertyKey:v note:v createDate:t data:b /
  uuid attachedToUuid propertyKey
RKPlaceForVersion versionId:i placeId:i / versionId placeId placeId,versionId
RKPropertySet propertyArea:v propertyName:v propertyValue:v / propertyArea propertyValue
  !propertyName,propertyArea,propertyValue
RKStackContent stackUuid:v versionUuid:v orderNumber:i / stackUuid versionUuid orderNumber
RKStackState stackUuid:v albumUuid:v albumPick:v isExpanded:i / stackUuid albumUuid
  albumUuid,stackUuid
RKVault uuid:v name:v vaultVersion:i vaultStatus:v volumePath:v volumeRelativePath:v
  savePreviews:i saveReferencedFiles:i createDate:t lastUpdate:t vaultSize:i capacity:i
  availableSpace:i isExpanded:i / uuid
RKVersion+ uuid:v name:v fileName:v versionNumber:i stackUuid:v masterUuid:v masterId:i
  rawMasterUuid:v nonRawMasterUuid:v projectUuid:v imageTimeZoneName:v imageDate:t mainRating:i
  isHidden:i isFlagged:i isOriginal:i isEditable:i colorLabelIndex:i masterHeight:i
  masterWidth:i processedHeight:i processedWidth:i rotation:i hasAdjustments:i
  hasEnabledAdjustments:i hasNotes:i createDate:t exportImageChangeDate:t
  exportMetadataChangeDate:t isInTrash:i thumbnailGroup:v overridePlaceId:i exifLatitude:d
  exifLongitude:d renderVersion:i adjSeqNum:i supportedStatus:i videoInPoint:v videoOutPoint:v
  videoPosterFramePoint:v showInLibrary:i editState:i contentVersion:i propertiesVersion:i
  rawVersion:v faceDetectionIsFromPreview:i faceDetectionRotationFromMaster:i editListData:b
  hasKeywords:i / uuid stackUuid masterUuid masterId rawMasterUuid nonRawMasterUuid isHidden
  colorLabelIndex hasEnabledAdjustments createDate isInTrash projectUuid,imageDate
RKVersionFaceContent versionId:i masterId:i isNamed:i faceKey:i faceIndex:i faceRectLeft:d
  faceRectTop:d faceRectWidth:d faceRectHeight:d / versionId isNamed faceKey
RKVersionGroup uuid:v relationshipType:i / uuid relationshipType
RKVolume uuid:v name:v diskUuid:v label:v isOffline:i createDate:t modDate:t / uuid name
  diskUuid createDate modDate
)";

} // namespace

const char* SchemaTables::library()
{
    return kLibrary;
}
