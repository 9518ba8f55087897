#pragma once

/// @file  Which part of an OpenEXR file is delivered, and as what.

#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"
#include "RenderingBase/host/imaging/formats/ExrChannels.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <ImfMultiPartInputFile.h>

namespace rb::imaging {

/// The picture that is taken from a file.
struct ExrPart {
    int index = 0;
    ExrChannels channels;
    KVRPixelImageFormat format = KVRPixelImageFormat::None;

    bool isGrey() const { return channels.kind == ExrChannels::Kind::Grey; }
    bool hasAlpha() const { return !channels.alpha.empty(); }
    bool hasChroma() const { return channels.kind == ExrChannels::Kind::LuminanceChroma; }
};

/// Takes the first flat part with channels that make a picture.
ReadResult chooseExrPart(const Imf::MultiPartInputFile& file, ExrPart& part);

}  // namespace rb::imaging
