#include "ProfileSamples.h"

#include <lcms2.h>

QByteArray ProfileSamples::linearGrey()
{
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1.0);
    void* const profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    cmsFreeToneCurve(curve);
    return bytes;
}
