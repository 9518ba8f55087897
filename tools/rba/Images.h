#pragma once

/// @file  What commands that read and write images share.

#include "RenderingBase/host/base/KVRList.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/imaging/KVRMMRasterAdministrator.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "tools/rba/Context.h"

#include <array>
#include <string>

namespace rb::cli {

inline constexpr int kDefaultDpi = 96;  ///< Of drawings: one of their pixels is one of ours.

/// Why the last image operation failed, without the path.
std::string imageErrorReason();

/// Loads an image with `KVRRbaImageServices`.
/// @param groups  Of drawings: the names of the groups to show; empty shows all.
/// Throws Failure ("path: expected ..., found ...") when it cannot be loaded.
KVRVar<KVRPixelImage> loadImage(const std::string& typedPath, int dpi = kDefaultDpi,
                                const KVRListValKVRUnicodeString& groups = {});

/// Whether the pixels are of 8 bits, and so can be written as they are.
bool isDisplayable(const KVRPixelImage& image);
/// Throws Failure for the image of @p path when they are not.
void checkDisplayable(const std::string& path, const KVRPixelImage& image);

/// The image of @p path with pixels that can be written: itself, or what `KVRRbaImageServices`
/// makes of float and half pixels, with the same resolution.
/// Throws Failure when there is no such conversion for its format.
KVRVar<KVRPixelImage> displayableImage(const std::string& path, KVRPixelImage& image);

const char* formatName(const KVRPixelImage& image);  ///< As in "RGB_f16".

/// The name that `KVRPixelImage::WriteToFile` has for the format of an extension in lower case;
/// null when such files are not written.
const char* writerFor(const std::string& extension);
inline constexpr const char* kWrittenExtensions = "png, tif, tiff, bmp, jpg or jpeg";

/// `writerFor` the extension of a typed path. Throws UsageError when such files are not written.
const char* writerOf(const std::string& typedPath);

/// Reads what the header of an image file says. @return  Whether it can be read.
bool readHeader(const std::string& typedPath, KVRMMImageProp& prop, KVRMMImageSize& size);

/// The mirror ball of six faces of one size, F1 to F6. Null without memory.
KVRVar<KVRPixelImage> mirrorBallOf(const std::array<KVRVar<KVRPixelImage>, 6>& faces);

/// Writes @p image with a writer from `writerOf`, whole or not at all. Throws Failure.
void writeImage(const KVRPixelImage& image, const std::string& typedPath, const char* writer);

/// Prints what was written: path, size, and format in the file: JPEG has no transparency.
void printImage(Context& context, const std::string& typedPath, const KVRPixelImage& image);

}  // namespace rb::cli
