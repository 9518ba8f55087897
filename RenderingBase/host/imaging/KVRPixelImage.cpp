#include "RenderingBase/host/imaging/KVRPixelImage.h"

#include "RenderingBase/host/imaging/KVRStream.h"
#include "RenderingBase/host/imaging/PixelConversion.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

using rb::imaging::ChannelType;
using rb::imaging::layoutOf;
using rb::imaging::PixelLayout;
using rb::imaging::PixelStorage;

namespace {

std::size_t pixelCount(int width, int height) {
    return width < 1 || height < 1
               ? 0
               : static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// Throws std::bad_alloc when the number does not fit.
std::size_t byteCount(int width, int height, KVRPixelImageFormat format) {
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(pixelCount(width, height),
                               static_cast<std::size_t>(layoutOf(format).bytesPerPixel()), &bytes))
        throw std::bad_alloc();
    return bytes;
}

template <typename Value>
PixelStorage around(Value* pixels, std::size_t bytes, KVRPixelDealloc mode) {
    return mode == KVRPixelDealloc::Adopted ? PixelStorage::adopt(pixels, bytes)
                                            : PixelStorage::view(pixels, bytes);
}

bool hasBytes(const PixelLayout& layout) {
    return layout.type == ChannelType::Byte || layout.type == ChannelType::Bit;
}

/// What `Stream` writes before the pixels.
struct StreamedHeader {
    std::int32_t width;
    std::int32_t height;
    std::int32_t format;
};

}  // namespace

KVRPixelImage::KVRPixelImage(int width, int height, KVRPixelImageFormat format, PixelStorage pixels)
    : m_width(width), m_height(height) {
    if (pixelCount(width, height) == 0) m_width = m_height = 0;
    replacePixels(format, std::move(pixels));
}

KVRPixelImage::KVRPixelImage(int width, int height, KVRPixelImageFormat format)
    : KVRPixelImage(width, height, format,
                    PixelStorage(byteCount(width, height, format), PixelStorage::Fill::Zero)) {}

KVRPixelImage::KVRPixelImage(int width, int height, KVRPixelImageFormat format,
                             unsigned char* pixels, KVRPixelDealloc mode)
    : KVRPixelImage(width, height, format, around(pixels, byteCount(width, height, format), mode)) {
}

KVRPixelImage::KVRPixelImage(int width, int height, KVRPixelImageFormat format, float* pixels,
                             KVRPixelDealloc mode)
    : KVRPixelImage(width, height, format, around(pixels, byteCount(width, height, format), mode)) {
}

KVRPixelImage::KVRPixelImage(const KVRPixelImage& other)
    : KVRPixelImage(other.m_width, other.m_height, other.m_format,
                    PixelStorage(other.m_pixels.size(), PixelStorage::Fill::None)) {
    if (m_pixels.size()) std::memcpy(m_pixels.data(), other.m_pixels.data(), m_pixels.size());
    copyAttributesFrom(other);
}

KVRPixelImage::~KVRPixelImage() = default;

KVRPixelImage* KVRPixelImage::CreateUnfilled(int width, int height, KVRPixelImageFormat format) {
    return CreateAround(width, height, format,
                        PixelStorage(byteCount(width, height, format), PixelStorage::Fill::None));
}

KVRPixelImage* KVRPixelImage::CreateUnfilledLike(const KVRPixelImage& other) {
    auto image =
        KVRVar<KVRPixelImage>::Adopt(CreateUnfilled(other.m_width, other.m_height, other.m_format));
    image->copyAttributesFrom(other);
    return image.Detach();
}

KVRPixelImage* KVRPixelImage::CreateAround(int width, int height, KVRPixelImageFormat format,
                                           PixelStorage pixels) {
    return new KVRPixelImage(width, height, format, std::move(pixels));
}

void KVRPixelImage::replacePixels(KVRPixelImageFormat format, PixelStorage pixels) {
    m_format = format;
    m_pixels = std::move(pixels);
    const PixelLayout& now = layout();
    m_buffer = now.type == ChannelType::Half && m_pixels.size()
                   ? KVRMMPIBuffer(reinterpret_cast<openexr_half*>(m_pixels.data()),
                                   m_pixels.size() / sizeof(std::uint16_t))
                   : KVRMMPIBuffer();
}

void KVRPixelImage::TakeOver(KVRPixelImage& other) noexcept {
    m_width = std::exchange(other.m_width, 0);
    m_height = std::exchange(other.m_height, 0);
    replacePixels(other.m_format, std::move(other.m_pixels));
    other.replacePixels(other.m_format, PixelStorage());
    m_resolution = std::exchange(other.m_resolution, {});
    m_profile = std::move(other.m_profile);
    m_metadata = std::exchange(other.m_metadata, {});
}

void KVRPixelImage::copyAttributesFrom(const KVRPixelImage& other) {
    m_resolution = other.m_resolution;
    m_profile = other.m_profile;
    m_metadata = other.m_metadata;
}

HRESULT KVRPixelImage::Stream(KVRStream& stream) const {
    const StreamedHeader header{m_width, m_height, static_cast<std::int32_t>(m_format)};
    const bool written =
        stream.Write(&header, sizeof header) && stream.Write(m_pixels.data(), m_pixels.size());
    return written ? S_OK : E_FAIL;
}

HRESULT KVRPixelImage::UnStream(KVRStream& stream) try {
    StreamedHeader header{};
    if (!stream.Read(&header, sizeof header)) return E_FAIL;
    const auto format = static_cast<KVRPixelImageFormat>(header.format);
    if (layoutOf(format).channels == 0 || header.width < 0 || header.height < 0) return E_FAIL;
    const std::size_t bytes = byteCount(header.width, header.height, format);
    PixelStorage pixels(bytes, PixelStorage::Fill::None);
    if (!stream.Read(pixels.data(), bytes)) return E_FAIL;
    m_width = bytes ? header.width : 0;
    m_height = bytes ? header.height : 0;
    replacePixels(format, std::move(pixels));
    m_resolution = {};
    m_profile.Reset();
    m_metadata.clear();
    return S_OK;
} catch (const std::bad_alloc&) {
    return E_FAIL;
}

int KVRPixelImage::GetBytesPerPixel() const { return layout().bytesPerPixel(); }
int KVRPixelImage::GetbytesPerPixel() const { return GetBytesPerPixel(); }
int KVRPixelImage::GetBitsPerPixel() const { return 8 * GetBytesPerPixel(); }

void KVRPixelImage::GetSize(int& width, int& height) const {
    width = m_width;
    height = m_height;
}

KVRPixelImageFormat KVRPixelImage::GetFormat() const { return m_format; }

const unsigned char* KVRPixelImage::GetPixelsToRead() const {
    return hasBytes(layout()) ? reinterpret_cast<const unsigned char*>(m_pixels.data()) : nullptr;
}

unsigned char* KVRPixelImage::GetPixelsToModify() {
    return const_cast<unsigned char*>(std::as_const(*this).GetPixelsToRead());
}

const float* KVRPixelImage::GetFloatingPixelsToRead() const {
    return layout().type == ChannelType::Float ? reinterpret_cast<const float*>(m_pixels.data())
                                               : nullptr;
}

float* KVRPixelImage::GetFloatingPixelsToModify() {
    return const_cast<float*>(std::as_const(*this).GetFloatingPixelsToRead());
}

const KVRMMPIBuffer* KVRPixelImage::GetPixelsBufferToRead() const {
    return layout().type == ChannelType::Half ? &m_buffer : nullptr;
}

KVRMMPIBuffer* KVRPixelImage::GetPixelsBufferToModify() {
    return const_cast<KVRMMPIBuffer*>(std::as_const(*this).GetPixelsBufferToRead());
}

KVRPixelImage* KVRPixelImage::Duplicate(KVRPixelImageFormat format) const try {
    const PixelLayout& target = layoutOf(format);
    if (target.channels == 0 || layout().channels == 0) return nullptr;
    if (format == m_format) return new KVRPixelImage(*this);
    auto copy = KVRVar<KVRPixelImage>::Adopt(CreateUnfilled(m_width, m_height, format));
    rb::imaging::convertPixels(layout(), m_pixels.data(), target, copy->m_pixels.data(),
                               pixelCount(m_width, m_height));
    copy->copyAttributesFrom(*this);
    return copy.Detach();
} catch (const std::bad_alloc&) {
    return nullptr;
}

HRESULT KVRPixelImage::ChangeFormat(KVRPixelImageFormat format) {
    if (format == m_format && layout().channels) return S_OK;
    const auto converted = KVRVar<KVRPixelImage>::Adopt(Duplicate(format));
    if (!converted) return E_FAIL;
    replacePixels(format, std::move(converted->m_pixels));
    return S_OK;
}

double KVRPixelImage::GetXResolution() const { return m_resolution.x; }
double KVRPixelImage::GetYResolution() const { return m_resolution.y; }
int KVRPixelImage::GetResolutionUnit() const { return m_resolution.unit; }

void KVRPixelImage::SetResolution(double x, double y, int unit) { m_resolution = {x, y, unit}; }

float KVRPixelImage::GetXPixelSize() const {
    if (!(m_resolution.x > 0)) return 0;
    const double unitMm = m_resolution.unit == rb::imaging::kPerInch         ? 25.4
                          : m_resolution.unit == rb::imaging::kPerCentimetre ? 10
                                                                             : 0;
    return static_cast<float>(unitMm / m_resolution.x);
}

HRESULT KVRPixelImage::GetMetadata(const KVRUnicodeString& key, KVRUnicodeString& value) const {
    const auto found = m_metadata.find(key.CastToCharPtr());
    if (found == m_metadata.end()) return E_FAIL;
    value = KVRUnicodeString(found->second.c_str());
    return S_OK;
}

HRESULT KVRPixelImage::SetMetadata(const KVRUnicodeString& key, const KVRUnicodeString& value) {
    m_metadata[key.CastToCharPtr()] = value.CastToCharPtr();
    return S_OK;
}

HRESULT KVRPixelImage::InsertPixelImage(const KVRPixelImage* image, int x, int y) {
    if (!image) return E_INVALIDARG;
    if (image->m_format != m_format || image == this) {
        const auto converted = KVRVar<KVRPixelImage>::Adopt(image->Duplicate(m_format));
        return converted ? InsertPixelImage(converted.Get(), x, y) : E_FAIL;
    }
    // 64 bits: a position near the end of the integers must not wrap round.
    const std::int64_t left = std::max<std::int64_t>(x, 0), top = std::max<std::int64_t>(y, 0);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t{x} + image->m_width, m_width);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t{y} + image->m_height, m_height);
    if (left >= right) return S_OK;
    const std::int64_t pixelBytes = GetBytesPerPixel();
    for (std::int64_t row = top; row < bottom; ++row)
        std::memcpy(m_pixels.data() + (row * m_width + left) * pixelBytes,
                    image->m_pixels.data() + ((row - y) * image->m_width + left - x) * pixelBytes,
                    static_cast<std::size_t>((right - left) * pixelBytes));
    return S_OK;
}
