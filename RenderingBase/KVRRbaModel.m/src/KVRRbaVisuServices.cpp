#include "RenderingBase/public/KVRRbaVisuServices.h"

#include "RenderingBase/KVRRbaModel.m/src/DisplayQueries.h"
#include "RenderingBase/host/visu/KVRGraphicCard.h"

HRESULT KVRRbaVisuServices::GetGraphicCardVendor(KVRString& vendor) {
    vendor = rb::vendorWord(KVRGetGraphicCardVendorID());
    return S_OK;
}

bool KVRRbaVisuServices::IsMetricUnit(KVRICkeUnit& unit) {
    return rb::measures(unit, KVRParmDictionary::LengthType);
}
