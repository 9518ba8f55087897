#pragma once

/// @file  Image services: finding image files, loading them, deriving images, measuring them.
///
/// Example:
///     KVRUnicodeString found;
///     if (KVRRbaImageServices::FindImageInPaths(1, "C:\\old\\oak.jpg", found, nullptr) == S_OK)
///         image = KVRRbaImageServices::CreatePixelImageFromFullPath(found, {}, 96);
///
/// Paths: a backslash separates directories (a slash is understood by the system calls, but only
/// the backslash by the texts that are cut here). Sizes: pixels, millimetres, dots to the inch of
/// 25.4 millimetres; arithmetic in single precision.
/// Threads: every operation may run on any thread.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRList.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/visu/IVisTextureFormat.h"

class KVRBaseUnknown;
class KVRPixelImage;

/// A class of static operations; there are no objects of it.
class KVR_EXPORT KVRRbaImageServices {
public:
    KVRRbaImageServices() = delete;

    /// Finds an image file from the path that was stored for it.
    ///
    /// First the real path (links resolved) itself; then its file name alone, in the directories of
    /// the setting "CatalagPath" of the repository "MaterialOptionsSettings", then below each
    /// directory of KVRStartupPath in "materials", "materials\shaders",
    /// "materials\shaders\textures", "materials\shaders\metaSL\textures" and "stickers".
    /// @param kind      Which extensions are accepted, in any case: 1 images, 2 effects, 3
    ///                  environment maps, 4 photometric tables. Another kind accepts none.
    /// @param found     Cleared first; the real path or the first hit.
    /// @param document  Ignored; kept for compatibility.
    /// @return  0 found; -1 the extension of the real path is not accepted, whether the file exists
    ///          or not; -2 not found, also for an empty path and for a loop of links.
    static int FindImageInPaths(int kind, const KVRUnicodeString& path, KVRUnicodeString& found,
                                KVRBaseUnknown* document);

    /// Cuts @p text at every ";" and appends the pieces. A piece that a ";" ends counts even when
    /// it is empty, the rest behind the last ";" only when it is not: "a;;b" gives three, "a;" one.
    /// @return  0.
    static int ExtractPathList(const KVRUnicodeString& text, KVRListValKVRUnicodeString& list);

    /// Splits a path into file name without extension and extension.
    ///
    /// Scans from the end to the first backslash. A dot as first character cuts no base name; a
    /// trailing dot leaves the extension empty, so that an earlier dot is taken; with neither dot
    /// nor backslash @p base stays as it was.
    /// @param extension  Cleared first; without its dot, case kept.
    /// Errors: E_FAIL for an empty path; @p base is untouched.
    static HRESULT SplitPath(const KVRUnicodeString& path, KVRUnicodeString& base,
                             KVRUnicodeString& extension);

    /// The text behind the last dot, case kept. When it reads as a number it is a version, and the
    /// text between the two last dots counts: "oak.png.3" gives "png". (A text that begins with a
    /// number reads as one: "model.a.3ds" gives "a". Kept for compatibility.) Empty without a dot
    /// and for paths shorter than two characters.
    static KVRUnicodeString ReadExtension(const KVRUnicodeString& path);

    /// Loads the image file at @p path.
    ///
    /// Of a dds texture with mip-maps level 1 is loaded, the one of half the size; of a cube map
    /// the mirror ball (`BuildPixelImageFromAllFaces`), of one with mip-maps that of level 1.
    /// Its embedded colour profile, if any, is applied (the result is sRGB) unless the environment
    /// variable KVR_TEXTURE_NO_COLOR_PROFILE is set. RGB orders become RGB, RGBA orders RGBA.
    /// @param groups  Names of the groups to show, for drawings; rasters take no notice.
    /// @param dpi     Resolution at which drawings are rasterised; rasters take no notice.
    /// @return  A new image, one reference for the caller; null when there is no such file or it
    ///          cannot be read (`KVRLastImageError` tells why).
    static KVRPixelImage* CreatePixelImageFromFullPath(const KVRUnicodeString& path,
                                                       const KVRListValKVRUnicodeString& groups,
                                                       int dpi);

    /// What kind of texture the DDS file at @p path holds.
    /// @return  1 a picture with mip-maps, 2 a cube without, 3 a cube with them; 0 for every other
    ///          file, for one that cannot be read, and when the extension (`ReadExtension`) is not
    ///          "dds" in lower case.
    static int CheckDDSFormat(const KVRUnicodeString& path);

    /// Replaces the file of a texture that renderers do not read, psd or rgb (SGI), by a TIFF file.
    ///
    /// It is written beside the file, under its name with the extension "tif", with the same
    /// pixels, resolution and profile; an older file of that name is replaced. The extension is
    /// what stands behind the last dot of the file name, in any case.
    /// @param path    The file that is there; becomes the path of the TIFF file, its folder and its
    ///                name joined with a backslash. Stays as it was for every other extension, and
    ///                when no TIFF can be written (pixels of psd files with 32 bits are floats).
    /// @param groups  Names of the groups to show, for drawings; rasters take no notice.
    /// @param dpi     Resolution at which drawings are rasterised; rasters take no notice.
    /// @return  0, also when nothing was written. Errors: E_FAIL when a psd or rgb file cannot be
    ///          read; @p path stays as it was. `KVRLastImageError` tells why in both cases.
    static HRESULT ConvertUnsupportedTexture(KVRUnicodeString& path,
                                             const KVRListValKVRUnicodeString& groups, int dpi);

    /// Makes a float image displayable: its colours, clamped to 0..1, are brightened, the darker
    /// the more (up to three times), and truncated to bytes; no number counts as 0.
    ///
    /// Alpha is 255 times itself, truncated, of which the low 8 bits stay: 2 gives 254, and what is
    /// no number or beyond 32 bits gives 0. Kept for compatibility. Without alpha: 255.
    /// @param source  RGB_f, RGBA_f or L_f. Unchanged.
    /// @return  A new RGBA image of the same size without resolution, profile or metadata, one
    ///          reference for the caller; null for null and, with a warning in the trace log,
    ///          without memory.
    /// Errors: another format is a fatal error, which ends the process.
    static KVRPixelImage* ConvertFloatTextureToRGBA(KVRPixelImage* source);
    /// The same for a half image: RGB_f16, RGBA_f16 or L_f16. Its alpha is clamped to 0..1.
    static KVRPixelImage* ConvertHalfFloatTextureToRGBA(KVRPixelImage* source);

    /// Repeats the one channel of a float image for red, green and blue.
    /// @param rgb  A new RGB_f image of the same size, one reference for the caller. Left as it was
    ///             when @p source is null or not L_f, and without memory.
    static void ConvertRTextureToRGB(KVRPixelImage* source, KVRPixelImage*& rgb);

    /// The code of the pixel format (`KVRPixelImageFormat`) in which a texture of @p format comes
    /// into memory; -1 for those without one. sRGB counts as RGBA.
    static int ConvertTextureFormat(IVisTextureFormat::Type format);

    /// Makes a picture grey, by HSL lightness: the mean of the greatest and the smallest of the
    /// first three channels of a pixel, truncated. What is behind them, alpha as a rule, stays.
    ///
    /// This and the four following derive an image without changing @p source, which may have any
    /// format and size. Resolution, colour profile and metadata are those of the source.
    /// @return  A new image in the same format, one reference for the caller; null for null and
    ///          without memory. A plain copy of an image with less than three bytes a pixel and of
    ///          one with channels of another type than 8 bits.
    static KVRPixelImage* ComputeGreyScaleImage(const KVRPixelImage* source);

    /// Makes a picture black and white: a pixel whose R + G + B reaches 383 is white. Alpha stays.
    /// @return  A new RGBA image; a plain copy when channels have another type than 8 bits; null
    ///          for null and without memory.
    static KVRPixelImage* ComputeMonochromaImage(const KVRPixelImage* source);

    /// Replaces colours by 255 minus them: the first byte of pixels of one or two bytes, the first
    /// three of larger ones. What is behind them, alpha as a rule, stays.
    /// @return  A new image in the same format, of a bilevel source in grey (L); a plain copy when
    ///          channels have another type than 8 bits; null for null and without memory.
    static KVRPixelImage* ComputeNegativeImage(const KVRPixelImage* source);

    /// Replaces alpha by 255 minus it.
    /// @return  A new RGBA image (opaque pixels become transparent); a plain copy when channels
    ///          have another type than 8 bits; null for null and without memory.
    static KVRPixelImage* ComputeAlphaInvertImage(const KVRPixelImage* source);

    /// Makes the mask of what is transparent: colours become 255 minus the last byte of a pixel of
    /// two or four bytes, and that byte 255. Pixels of one or three bytes become black: without
    /// alpha nothing is masked.
    /// @return  A new image in the same format; a plain copy when channels have another type than 8
    ///          bits; null for null and without memory.
    static KVRPixelImage* GenerateMaskFromAlpha(const KVRPixelImage* source);

    /// Makes the normal map of a picture, taking its brightness for its height: x grows to the
    /// right and y downwards in memory, -1 to 1 becomes 0 to 255, a level place (127, 127, 255).
    ///
    /// A Sobel filter over (R + G + B) / 765 with z = 0.5; at the borders pixels repeat themselves.
    /// Of the pixel to the lower left only the red counts, with green and blue of the one before
    /// it; kept for compatibility.
    /// @param source  Changed to RGB in place when it has one, two or four 8-bit channels.
    /// @return  A new image in the format of the source, one reference for the caller; a plain copy
    ///          when channels have another type than 8 bits; null for null and without memory.
    static KVRPixelImage* GenerateBumpMap(KVRPixelImage* source);

    /// Fits a picture into a square: zoomed with a filter, in proportion, in the middle of the grey
    /// (125, 125, 125). Float and half images are made displayable first. Alpha is copied.
    /// @param source  Unchanged.
    /// @param size    Pixels of a side.
    /// @param icon    A new RGBA image, one reference for the caller.
    /// @return  0. Errors: E_NOTIMPL for BGR_f16 and BGRA_f16. E_FAIL for null, for a size below 1
    ///          or of more pixels than KVRImagePixelLimit, and without memory: @p icon is left as
    ///          it was. E_FAIL too for a picture without pixels or so narrow that less than half a
    ///          pixel would be left of it, and when a side of it or of the icon is longer than
    ///          `KVRPixelImage::kLongestFilteredSide`: @p icon is set all the same, empty, and the
    ///          caller's.
    static HRESULT ComputeIconImage(KVRPixelImage* source, int size, KVRPixelImage*& icon);

    /// Turns the six faces of a cube map into the picture of a mirroring ball inside it.
    ///
    /// With x to the right, y downwards and z away from the eye, f1 is the face at +y, f2 at -y,
    /// f3 at +x, f4 at -x, f5 at +z behind the ball, f6 at -z behind the eye.
    /// Outside the ball pixels are black with alpha 1, kept for compatibility.
    /// @param f1..f6  Changed to RGBA in place when they are in another format.
    /// @return  A new RGBA image, as wide and as high as f5 is wide, one reference for the caller;
    ///          null when a face is missing, when they are not all of one size, when the ball would
    ///          have more pixels than KVRImagePixelLimit, and without memory.
    static KVRPixelImage* BuildPixelImageFromAllFaces(KVRPixelImage* f1, KVRPixelImage* f2,
                                                      KVRPixelImage* f3, KVRPixelImage* f4,
                                                      KVRPixelImage* f5, KVRPixelImage* f6);

    /// Measures an image.
    /// @param width, height      Pixels; 0 first.
    /// @param dpi                Dots to the inch, 0 when the image states no resolution.
    /// @param widthMm, heightMm  Millimetres; left as they were when @p dpi is 0.
    /// Errors: E_FAIL for null; outputs are untouched.
    static HRESULT GiveImageInfos(KVRPixelImage* image, int& width, int& height, float& dpi,
                                  float& widthMm, float& heightMm);
    /// Loads the file at @p path (drawings at 96 dots to the inch) and measures it.
    /// Errors: E_FAIL for an empty path and for a file that cannot be loaded.
    static HRESULT GiveImageInfos(const KVRUnicodeString& path, int& width, int& height, float& dpi,
                                  float& widthMm, float& heightMm);

    /// Dots to the inch of @p sizePx pixels on @p sizeMm millimetres, rounded with halves away from
    /// zero; 0 when @p sizeMm is 0. A result beyond the range of int becomes its nearest end.
    static int InferDpi(int sizePx, float sizeMm);
    /// Millimetres of @p sizePx pixels; 0 when @p dpi is 0.
    static float ComputeSizeMM(int sizePx, float dpi);
    /// Pixels on @p sizeMm millimetres, rounded with halves away from zero. A result beyond the
    /// range of int becomes its nearest end.
    static int ComputeSizePx(float sizeMm, int dpi);
    /// The size of one dot in millimetres, 25.4 / dpi; 0 when @p dpi is 0. (Despite its name not
    /// the dots to the millimetre; kept for compatibility.)
    static float DotsPerInchToDotsPerMM(float dpi);

    /// Width over height. @param ratio  1 first. Errors: E_FAIL when a side is 0.
    static HRESULT Compute2DImageRatio(int width, int height, float& ratio);
    /// Fits texture coordinates to a picture of the given ratio: below 1 multiplies u by it, from 1
    /// upwards divides v by it. Errors: E_FAIL when @p ratio is not positive.
    static HRESULT ComputeAdjusted2DTextureCoordinate(float ratio, float& u, float& v);
};
