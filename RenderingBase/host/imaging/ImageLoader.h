#pragma once

/// @file  From the bytes of a file to its header and its pixels: chooses the reader and holds what
/// it declares against limits and against the bytes that are there. Private to host/imaging.

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <memory>
#include <string>
#include <string_view>

class KVRPixelImage;
class KVRUnicodeString;

namespace rb::imaging {

/// A file whose header was read and accepted. Its source must outlive it.
struct OpenImage {
    const ByteSource* source = nullptr;
    const ImageFormat* format = nullptr;
    std::unique_ptr<ImageReader> reader;
    ImageHeader header;
};

/// The extension of a file name in lower case, without its dot; that before it when it is the
/// number of a version ("oak.TGA.3" gives "tga").
std::string imageExtension(std::string_view name);

/// What is expected in place of a file of no known format: "a png, jpg, ... or tga file".
/// @param textureToo  Whether a texture file is welcome, too.
std::string expectedFile(bool textureToo);

/// Recognises the format and reads the header. Never throws.
/// @param extension  As `imageExtension` gives it; only formats without a magic number want one.
/// @param whole  Whether the pixels will be wanted: then the image may have no more pixels than
///               KVRImagePixelLimit says, and the file must have the bytes that its header calls
///               for (`checkSize`). A header alone may be asked of any file.
ReadResult openImage(ByteSource& source, std::string_view extension, bool whole, OpenImage& image);

/// Allocates and decodes the pixels. Never throws.
ReadResult decodeImage(OpenImage& image, PixelStorage& pixels);

/// Reads a whole image, with resolution and profile. Throws std::bad_alloc.
/// @param name  Of the file: some formats are recognised by its extension.
/// @return  One reference for the caller; null with a @p refusal.
KVRPixelImage* loadImage(ByteSource& source, const KVRUnicodeString& name, ReadResult& refusal);

}  // namespace rb::imaging
