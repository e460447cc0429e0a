#include "SchemaTables.h"

const char* SchemaTables::faces()
{
    return R"(
RKDetectedFace+ uuid:v masterUuid:v altMasterUuid:v faceKey:i correlatedFaceKey:i
  ownerServiceKey:v faceIndex:i width:d height:d topLeftX:d topLeftY:d topRightX:d topRightY:d
  bottomLeftX:d bottomLeftY:d bottomRightX:d bottomRightY:d confidence:d sharpness:d
  exposureValue:d rejected:i faceCount:i ignore:i faceFlags:i hasFaceTile:i tileFacePosition:i
  faceAngle:d faceDirectionAngle:d faceSkinScore:d skippedInUnnamedFaces:i / uuid masterUuid
  altMasterUuid faceKey correlatedFaceKey ownerServiceKey ignore hasFaceTile
  masterUuid,faceIndex
RKDetectedFaceBlob detectedFaceId:i recogBuffer:b histogram64Buffer:b / detectedFaceId
RKDetectedFaceExternal serviceKey:v detectedFaceId:i albumUuid:v versionUuid:v publicationUID:v
  serviceData:b / detectedFaceId albumUuid versionUuid
RKFaceExternal faceKey:i serviceKey:v reference:v / serviceKey,reference serviceKey,faceKey
RKFaceFeature detectedFaceId:i featureIndex:i x:d y:d confidence:d / detectedFaceId
RKFaceName uuid:v faceKey:i keyVersionUuid:v name:v fullName:v email:v similarFacesCached:i
  similarFacesOpen:i manualOrder:i lastUsedDate:t attrs:b / uuid faceKey keyVersionUuid
RKSimilarFaces seedFaceKey:i faceKey:i detectedFaceId:i score:d ignored:i / seedFaceKey faceKey
  detectedFaceId
)";
}

const char* SchemaTables::history()
{
    return R"(
RKAlbumChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKAlbumVersionChange versionUuid:v albumUuid:v changeType:i changeMask:i changeDate:t
  changeDbUuid:v / versionUuid albumUuid changeType changeDate changeDbUuid
RKAttachmentChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKCustomSortEntryChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKDetectedFaceChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKDetectedFaceExternalChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v
  / changeUuid changeType changeDate changeDbUuid
RKFaceExternalChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKFaceNameChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKFolderChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKGroupsForMastersChange groupUuid:v masterUuid:v changeType:i changeMask:i changeDate:t
  changeDbUuid:v / groupUuid masterUuid changeType changeDate changeDbUuid
RKGroupsForVersionsChange groupUuid:v versionUuid:v changeType:i changeMask:i changeDate:t
  changeDbUuid:v / groupUuid versionUuid changeType changeDate changeDbUuid
RKImageAdjustmentChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKImageProxyStateChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKImportGroupChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKKeywordChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKKeywordForVersionChange versionUuid:v keywordUuid:v changeType:i changeMask:i changeDate:t
  changeDbUuid:v / versionUuid keywordUuid changeType changeDate changeDbUuid
RKMasterChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKMasterGroupChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKNoteChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKPlaceForVersionChange versionUuid:v placeLookup:v changeType:i changeMask:i changeDate:t
  changeDbUuid:v / versionUuid placeLookup changeType changeDate changeDbUuid
RKRepair action:v comments:v createDate:t / createDate
RKStackEntryChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKStackStateChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
RKVaultChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKVersionChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v / changeUuid
  changeType changeDate changeDbUuid
RKVersionGroupChange changeUuid:v changeType:i changeMask:i changeDate:t changeDbUuid:v /
  changeUuid changeType changeDate changeDbUuid
)";
}

const char* SchemaTables::sharingActivity()
{
    return R"(
PublishServiceAnnotation uuid:v serviceKey:v accountIdentifier:v
  annotationPublicationIdentifier:v photoUid:v photoPublicationUid:v authorIdentifier:v
  destination:v publicationDate:t modificationDate:t contentType:v content:v / uuid serviceKey
  annotationPublicationIdentifier photoUid photoPublicationUid
PublishServiceContact uuid:v serviceKey:v serviceUserIdentifier:v accountIdentifier:v fullName:v
  firstName:v lastName:v modificationDate:t profilePictureUrl:v profilePicture:b
  birthDateComponents:v / uuid serviceKey serviceUserIdentifier accountIdentifier
SharingHistoryItem uuid:v serviceKey:v senderAccountIdentifier:v destination:v publicationDate:t
  / uuid serviceKey
SharingHistoryItemPhoto sharingHistoryItemId:i photoUid:v photoPublicationUid:v /
  sharingHistoryItemId photoUid photoPublicationUid
)";
}

const char* SchemaTables::projects()
{
    return R"(
KHProject uuid:v type:i productId:i productCode:v themeId:i configurationId:i name:v
  autoLayoutEnabled:i includeBranding:i includePageNumbers:i themeVersion:i themeIdentifier:v
KHProjectAppliedBehavior behaviorId:i entityId:i entityClass:v
KHProjectAsset path:v smallThumbnailPath:v largeThumbnailPath:v type:v resolution:i branding:i
  thumbnailOverridePath:v screenImagePath:v
KHProjectAttribute projectId:i key:v valueType:v value:v
KHProjectBehavior traitId:i categoryId:i name:v condition:v
KHProjectBehaviorAttribute behaviorId:i key:v keyType:i value:v valueType:v
KHProjectConfiguration categoryId:i productId:i name:v
KHProjectConfigurationAttribute configurationId:i key:v value:v valueType:v
KHProjectConfigurationTextStyle configurationId:i textStyleId:i designTag:v type:i
  textStyleName:v
KHProjectConfigurationTreatment configurationId:i treatmentId:i designTag:v type:i sequence:i
KHProjectFontUsage projectId:i font:v count:i / projectId
KHProjectFrame masterId:i parentLayoutId:i childLayoutId:i treatmentId:i designTag:i x:d y:d
  width:d height:d relative:i rotation:d drawingOrder:i fillOrder:i blendMode:i locked:i
  contentEntityClass:v hidden:i name:v source:v mirrorRotation:i mirrorAlignment:i isLink:i
  groupId:i treatmentIdentifier:v / parentLayoutId
KHProjectFrameAttribute frameId:i key:v valueType:v value:v / frameId
KHProjectFrameGroup layoutId:i horizontalResizing:i verticalResizing:i topMargin:d
  bottomMargin:d leftMargin:d rightMargin:d visible:i sequence:i holeCount:i
KHProjectJournalAttribute journalEntryId:i key:v valueType:i value:v
KHProjectJournalEntry projectId:i type:i source:v date:v entryText:v imageKey:v linkedEntryId:i
KHProjectLayer classId:i name:v categoryId:i blendMode:i hidden:i
KHProjectLayerAttribute layerId:i key:v valueType:v value:v category:v
KHProjectLayout projectId:i masterId:i themeId:i sequence:i treatmentId:i compositePath:v
  width:d height:d holeCount:i layoutTypeId:i representativeLayoutId:i hasPhotoFrames:i
  hasTextFrames:i hasMapFrames:i mirror:i drawingBehavior:i masterIdentifier:v
  treatmentIdentifier:v favorability:d disableBackground:i isPlaceholder:i wildcardScale:d
  wildcardOffset:v hasThumbnail:i bindingMarginApplied:i autononomous:i / projectId
  layoutTypeId,themeId
KHProjectPhoto projectId:i photoId:v caption:v / projectId photoId,projectId
KHProjectPhotoFrame photoId:i frameId:i / photoId frameId
KHProjectTextStyle styleId:i font:v fontSize:i leading:d kerning:d verticalAlignment:i
  horizontalAlignment:i color:v projectId:i lineSpacing:d styleIdentifier:v / styleId,projectId
KHProjectTreatment name:v categoryId:i hidden:i upperLeftInset:v upperRightInset:v
  lowerLeftInset:v lowerRightInset:v upperLeftRadius:d upperRightRadius:d lowerLeftRadius:d
  lowerRightRadius:d oval:i selectionStyle:i sequence:i conversionName:v useIntegralBounds:i
  upperScaleThreshold:d upperScaleFactor:d lowerScaleThreshold:d lowerScaleFactor:d
  onlineRepresentation:v traits:v
KHProjectTreatmentLayer treatmentId:i layerId:i layerType:i outside:i sequence:i
)";
}
