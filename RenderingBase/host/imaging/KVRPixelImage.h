#pragma once

/// @file  Images in memory: pixels of one format, with colour profile, resolution and metadata.
///
/// Example:
///     KVRVar<KVRPixelImage> image = KVRVar<KVRPixelImage>::Adopt(
///         KVRPixelImage::CreateFromFile("textures\\oak.jpg", 1, 0));
///     if (!image) std::cerr << KVRLastImageError().Message() << '\n';

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/imaging/ImageResolution.h"
#include "RenderingBase/host/imaging/KVRMMColorProfile.h"
#include "RenderingBase/host/imaging/KVRMMPIBuffer.h"
#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"
#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/modeler/KVRBaseUnknown.h"
#include "RenderingBase/host/modeler/KVRClass.h"
#include "RenderingBase/host/modeler/KVRVar.h"

#include <cstddef>
#include <map>
#include <span>
#include <string>

class KVRStream;

/// What becomes of a pixel buffer that is handed to an image.
enum class KVRPixelDealloc : int {
    Adopted = 0,  ///< The image frees it with `delete[]`.
    Viewed = 1,   ///< The caller keeps it, and keeps it alive longer than the image.
};

/// How a zoomed image is computed.
enum class KVRPixelZoom : int {
    Nearest = 0,   ///< The nearest source pixel.
    Bilinear = 1,  ///< The four nearest source pixels; for enlarging.
    Filtered = 2,  ///< Every source pixel under the target pixel (triangle filter, no ringing).
};

/// A reference-counted picture.
///
/// Memory: rows top first, each left to right, no padding; the channels of a pixel side by side in
/// the order of the format. Alpha is as stored in the file: never multiplied in or out.
/// Threads: const operations may be called at once; the others need the image to themselves.
/// Lifetime: one reference for whoever made it. Pointers into the pixels end with the image or
/// with the next operation that changes its format.
class KVR_EXPORT KVRPixelImage : public KVRClass<"KVRPixelImage"> {
public:
    /// A black (zero-filled) image. A side below 1 gives an image without pixels, 0 x 0.
    /// Throws std::bad_alloc.
    KVRPixelImage(int width, int height, KVRPixelImageFormat format);
    /// An image around 8-bit pixels that exist already: width x height x bytes per pixel.
    KVRPixelImage(int width, int height, KVRPixelImageFormat format, unsigned char* pixels,
                  KVRPixelDealloc mode);
    /// The same around float pixels: width x height x channels values.
    KVRPixelImage(int width, int height, KVRPixelImageFormat format, float* pixels,
                  KVRPixelDealloc mode);
    /// A deep copy: size, format, pixels, profile, resolution and metadata.
    KVRPixelImage(const KVRPixelImage& other);
    KVRPixelImage& operator=(const KVRPixelImage&) = delete;
    ~KVRPixelImage() override;

    /// Reads the image file at @p path: png, jpg, tif, exr, hdr, bmp, psd, psb, sgi, pic, told
    /// apart by their first bytes, or tga, which needs its extension besides.
    ///
    /// Delivered are 8-bit formats for 1 to 4 channels of 1 to 16 bits (palettes expanded, CMYK and
    /// Lab converted to sRGB), half formats for half files, float formats for float files. No
    /// orientation is applied. Resolution and colour profile are those of the file.
    /// @param readOnlyState  1 as callers pass it; pixels may be modified all the same, and the
    ///                       file is never written back.
    /// @param flag           Kept for compatibility; 0.
    /// @return  A new image, one reference for the caller; null when the file cannot be read, and
    ///          `KVRLastImageError` tells why. dds, ktx2 and svg files always give null: they have
    ///          entries of their own.
    static KVRPixelImage* CreateFromFileEx(const KVRUnicodeString& path, int readOnlyState,
                                           int flag);
    /// The same.
    static KVRPixelImage* CreateFromFile(const KVRUnicodeString& path, int readOnlyState, int flag);
    /// The same from the bytes of a file; @p name stands for the path.
    static KVRPixelImage* CreateFromMemory(std::span<const std::byte> file,
                                           const KVRUnicodeString& name);
    /// Whether an image of this size may be made of files: KVRImagePixelLimit of the environment
    /// says how many pixels (2^28 without it; none when it is not a whole positive number).
    static bool IsWithinPixelLimit(int width, int height);
    /// An image whose pixels are undefined, for code that writes every byte. Throws std::bad_alloc.
    static KVRPixelImage* CreateUnfilled(int width, int height, KVRPixelImageFormat format);
    /// The same with size, format, profile, resolution and metadata of @p other.
    static KVRPixelImage* CreateUnfilledLike(const KVRPixelImage& other);
    /// An image that takes over @p pixels: width x height x bytes per pixel of @p format.
    static KVRPixelImage* CreateAround(int width, int height, KVRPixelImageFormat format,
                                       rb::imaging::PixelStorage pixels);

    /// Writes width, height, format and pixels.
    virtual HRESULT Stream(KVRStream& stream) const;
    /// Replaces the content by what `Stream` wrote; profile, resolution and metadata are gone.
    /// Errors: E_FAIL, the image is unchanged.
    virtual HRESULT UnStream(KVRStream& stream);
    virtual int GetBytesPerPixel() const;
    virtual int GetbytesPerPixel() const;  ///< The same number; both exist for compatibility.
    virtual int GetBitsPerPixel() const;
    virtual void GetSize(int& width, int& height) const;  ///< Pixels.
    virtual KVRPixelImageFormat GetFormat() const;
    /// The pixels of an 8-bit format (bilevel included); null for 16-bit, half and float formats.
    virtual const unsigned char* GetPixelsToRead() const;
    virtual unsigned char* GetPixelsToModify();
    /// The pixels of a float format; null for the others.
    virtual const float* GetFloatingPixelsToRead() const;
    virtual float* GetFloatingPixelsToModify();
    /// The pixels of a half format; null for the others.
    virtual const KVRMMPIBuffer* GetPixelsBufferToRead() const;
    virtual KVRMMPIBuffer* GetPixelsBufferToModify();
    /// A new image with the same picture in @p format, profile, resolution and metadata included;
    /// null when there is no such conversion (format `None` or a code out of range).
    ///
    /// Grey becomes colour by repetition, colour grey as 0.299 R + 0.587 G + 0.114 B rounded; a
    /// missing alpha is opaque, a dropped one is forgotten. Float and half to integers:
    /// clamped to 0..1, scaled and rounded, NaN to 0. To bilevel: white from one half upwards.
    virtual KVRPixelImage* Duplicate(KVRPixelImageFormat format) const;
    /// Converts in place, by the rules of `Duplicate`. Errors: E_FAIL, the image is unchanged.
    virtual HRESULT ChangeFormat(KVRPixelImageFormat format);
    /// Resolution as the file states it, in pixels to the unit; 0 when it states none.
    virtual double GetXResolution() const;
    virtual double GetYResolution() const;
    virtual int GetResolutionUnit() const;  ///< 1 none, 2 inch, 3 centimetre.
    /// Errors: E_FAIL when @p key was never set; @p value is untouched.
    virtual HRESULT GetMetadata(const KVRUnicodeString& key, KVRUnicodeString& value) const;
    virtual HRESULT SetMetadata(const KVRUnicodeString& key, const KVRUnicodeString& value);
    /// Tags the image, changing no pixel; null tags it sRGB. The image takes its own reference.
    /// @param flag  Kept for compatibility; 0.
    virtual HRESULT AssignColorProfile(KVRMMColorProfile* profile, int flag);
    /// Converts the pixels from the tagged profile (sRGB when untagged) to @p target (null: sRGB)
    /// and tags the image with it. Relative colorimetric with black point compensation; alpha
    /// stays. Errors: E_FAIL when a profile's colour space does not fit the image; nothing is
    /// changed.
    virtual HRESULT ApplyColorProfile(KVRMMColorProfile* target, int flag);

    /// The profile that the image is tagged with, one reference for the caller; null when untagged.
    KVRMMColorProfile* GetColorProfile() const;
    /// Millimetres to a pixel; 0 when unknown.
    float GetXPixelSize() const;
    /// Sets what the resolution operations report. @p unit 1 none, 2 inch, 3 centimetre.
    void SetResolution(double x, double y, int unit);
    /// Writes an image file, whole or not at all: the file appears under its name when complete.
    /// @param formatName  "PNG", "TIFF", "BMP", or JPEG at three qualities: "JPG_FAIR" (50),
    ///                    "JPG" (75), "JPG_HIGH" (95), which take 8-bit images; "EXR" (32 bits) or
    ///                    "HDR" (8 bits with a common exponent), which take float images. JPEG and
    ///                    HDR drop alpha.
    /// Errors: E_FAIL for another name, for images of other pixels, and when the file cannot be
    ///         written; `KVRLastImageError` tells why.
    HRESULT WriteToFile(const KVRUnicodeString& path, const char* formatName) const;
    /// Pixels of the longest side, before or after, of an image that is zoomed with a filter.
    static constexpr int kLongestFilteredSide = 1 << 20;
    /// The same picture in another size; its resolution is scaled with it, so that it stays as
    /// large on paper. Null when a side is below 1 or the image has no pixels.
    /// @param mode  See `KVRPixelZoom`; another value gives null, and so does filtering when a side
    ///              is longer than kLongestFilteredSide.
    KVRPixelImage* CreateZoomedImage(int width, int height, int mode) const;
    /// Copies @p image over this one, its top left corner at (@p x, @p y), without blending.
    /// It is converted to this image's format and clipped. Errors: E_INVALIDARG for null.
    HRESULT InsertPixelImage(const KVRPixelImage* image, int x, int y);

    /// All pixels as bytes, whatever the format.
    std::span<const std::byte> GetRawPixels() const { return m_pixels.bytes(); }
    std::span<std::byte> GetRawPixels() { return m_pixels.bytes(); }

protected:
    /// Takes over @p pixels: width x height x bytes per pixel of @p format.
    KVRPixelImage(int width, int height, KVRPixelImageFormat format,
                  rb::imaging::PixelStorage pixels);
    /// Becomes the image that @p other is, which is left without pixels. Nothing is copied.
    void TakeOver(KVRPixelImage& other) noexcept;

private:
    const rb::imaging::PixelLayout& layout() const { return rb::imaging::layoutOf(m_format); }
    void replacePixels(KVRPixelImageFormat format, rb::imaging::PixelStorage pixels);
    void copyAttributesFrom(const KVRPixelImage& other);

    int m_width = 0;
    int m_height = 0;
    KVRPixelImageFormat m_format = KVRPixelImageFormat::None;
    rb::imaging::PixelStorage m_pixels;
    KVRMMPIBuffer m_buffer;  // empty unless the format is a half format
    rb::imaging::Resolution m_resolution;
    KVRVar<KVRMMColorProfile> m_profile;
    std::map<std::string, std::string> m_metadata;
};
