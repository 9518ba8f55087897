#include "RenderingBase/public/KVRRbaIESLoader.h"

#include "RenderingBase/KVRRbaModel.m/src/IesParser.h"
#include "RenderingBase/KVRRbaModel.m/src/IesScanner.h"
#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/IntensityTable.h"
#include "RenderingBase/host/base/KVRMathQuaternion.h"
#include "RenderingBase/host/files/KVRFileSystem.h"

#include <cmath>
#include <exception>
#include <new>
#include <utility>

namespace KVRRbaIESLoader {
namespace {

namespace kernels = rb::kernels;
using rb::photometry::ReadFailure;

constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaIESLoader");

/// Half turns about x, y and z, combined.
KVRMathQuaternion quaternionOf(const KVRMathVector& orientation) {
    const double hx = orientation.GetX() / 2, hy = orientation.GetY() / 2,
                 hz = orientation.GetZ() / 2;
    const double cx = std::cos(hx), sx = std::sin(hx), cy = std::cos(hy), sy = std::sin(hy),
                 cz = std::cos(hz), sz = std::sin(hz);
    return {cy * sx * cz + sy * cx * sz, sy * cx * cz - cy * sx * sz, cy * cx * sz - sy * sx * cz,
            sy * sx * sz + cy * cx * cz, 1};
}

/// A table of what @p parse reads; a failure is told in the trace log.
template <class Parse>
HRESULT load(Parse parse, std::int32_t thetaCount, std::int32_t phiCount, std::int32_t channels,
             const KVRMathVector& orientation, float* table) try {
    IESPhotometry photometry;
    if (Failed(parse(photometry))) return E_FAIL;
    resample(photometry, thetaCount, phiCount, channels, orientation, table);
    return S_OK;
} catch (const std::exception& error) {
    constexpr std::uint32_t kLine = 539;  // kept for compatibility
    rb::trace::write(rb::trace::kError, kSource, " ", kLine, " ", error.what());
    return E_FAIL;
}

HRESULT parse(std::string_view text, IESPhotometry& photometry, IESUnusedData* unused) {
    IESUnusedData data;
    const HRESULT status = rb::photometry::parse(text, photometry, data);
    if (unused) *unused = std::move(data);
    return status;
}

kernels::CandelaGrid gridOf(const IESPhotometry& photometry) {
    return {photometry.photometricType, photometry.verticalAngles, photometry.horizontalAngles,
            photometry.candelaValues, photometry.intensityScale};
}

}  // namespace

HRESULT loadIES(const KVRUnicodeString& path, std::int32_t thetaCount, std::int32_t phiCount,
                std::int32_t channels, const KVRMathVector& orientation, float* table) {
    const auto parse = [&path](IESPhotometry& photometry) {
        return parseIESFile(path.CastToCharPtr(), photometry);
    };
    return load(parse, thetaCount, phiCount, channels, orientation, table);
}

HRESULT loadIES(std::span<const std::byte> file, std::int32_t thetaCount, std::int32_t phiCount,
                std::int32_t channels, const KVRMathVector& orientation, float* table) {
    const auto parse = [file](IESPhotometry& photometry) {
        return parseIESText({reinterpret_cast<const char*>(file.data()), file.size()}, photometry);
    };
    return load(parse, thetaCount, phiCount, channels, orientation, table);
}

void resample(const IESPhotometry& photometry, std::int32_t thetaCount, std::int32_t phiCount,
              std::int32_t channels, const KVRMathVector& orientation, float* table) {
    if (thetaCount < 1 || phiCount < 1 || channels < 1) return;
    const kernels::TableShape shape{static_cast<std::size_t>(thetaCount),
                                    static_cast<std::size_t>(phiCount),
                                    static_cast<std::size_t>(channels)};
    kernels::Rotation rotation;
    quaternionOf(orientation).GetCoord(rotation.x, rotation.y, rotation.z, rotation.scalar);
    kernels::resample(gridOf(photometry), shape, rotation,
                      {table, shape.rows * shape.columns * shape.channels});
}

HRESULT parseIESFile(const char* path, IESPhotometry& photometry, IESUnusedData* unused) {
    photometry = {};
    photometry.filePath = path ? path : "";
    std::string text, reason;
    const HRESULT status = KVRReadFile(photometry.filePath, kMostFileBytes, text, reason);
    if (status == E_OUTOFMEMORY) throw std::bad_alloc();
    if (Failed(status))
        throw ReadFailure(photometry.filePath + ": expected a readable file, found " + reason);
    try {
        return parse(text, photometry, unused);
    } catch (const ReadFailure& failure) {
        throw ReadFailure(photometry.filePath + ": " + failure.what());
    }
}

HRESULT parseIESText(std::string_view text, IESPhotometry& photometry, IESUnusedData* unused) {
    photometry = {};
    return parse(text, photometry, unused);
}

float candelaAt(const IESPhotometry& photometry, float theta, float phi) {
    return kernels::candelaAt(gridOf(photometry), theta, phi);
}

}  // namespace KVRRbaIESLoader
