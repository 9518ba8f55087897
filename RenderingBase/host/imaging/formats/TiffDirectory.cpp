#include "RenderingBase/host/imaging/formats/TiffDirectory.h"

#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace rb::imaging {
namespace {

/// A field of a handle; when the file has none, what the standard supplies, or else @p absent.
template <typename Value>
Value field(TIFF* tiff, std::uint32_t tag, Value absent) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff, tag, &value) ? value : absent;
}

ReadResult refuseNumber(const char* expected, const char* what, std::uint64_t number) {
    return refuse(expected, what + std::to_string(number));
}

ReadResult readSampleType(TIFF* tiff, TiffDirectory& d) {
    const int bits = field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    const auto format = field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    switch (format) {
        case SAMPLEFORMAT_UINT:
        case SAMPLEFORMAT_VOID:
            d.type = {SampleKind::Unsigned, bits};
            break;
        case SAMPLEFORMAT_INT:
            d.type = {SampleKind::Signed, bits};
            break;
        case SAMPLEFORMAT_IEEEFP:
            d.type = {SampleKind::Float, bits};
            break;
        default:
            return refuseNumber("integer or floating-point samples", "sample format ", format);
    }
    if (d.type.kind != SampleKind::Float)
        return bits >= 1 && bits <= 32 ? ReadResult{}
                                       : refuseNumber("integer samples of 1 to 32 bits",
                                                      "bits: ", static_cast<std::uint64_t>(bits));
    return bits == 16 || bits == 24 || bits == 32 || bits == 64
               ? ReadResult{}
               : refuseNumber("floating-point samples of 16, 24, 32 or 64 bits",
                              "bits: ", static_cast<std::uint64_t>(bits));
}

/// Which sample is alpha: the first that is marked so; a single extra sample without a mark, too,
/// as many programs do not write one.
int findAlpha(TIFF* tiff, const TiffDirectory& d) {
    const int extra = d.samples - d.colorSamples();
    std::uint16_t count = 0;
    const std::uint16_t* marks = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &marks))
        for (int i = 0; i < count && i < extra; ++i)
            if (marks[i] == EXTRASAMPLE_ASSOCALPHA || marks[i] == EXTRASAMPLE_UNASSALPHA)
                return d.samples - std::min<int>(count, extra) + i;
    return extra == 1 ? d.colorSamples() : -1;
}

ReadResult readPalette(TIFF* tiff, TiffDirectory& d) {
    if (d.type.kind == SampleKind::Float || d.type.bits > 16)
        return refuse("palette indices of 1 to 16 bits", "other samples");
    const std::uint16_t* maps[3] = {};
    if (!TIFFGetField(tiff, TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]))
        return refuse("a colour map", "none");
    const std::size_t count = std::size_t{1} << d.type.bits;
    // Some programs write entries of 8 bits where 16 belong.
    bool small = true;
    for (const auto* map : maps)
        small = small && std::all_of(map, map + count, [](unsigned entry) { return entry < 256; });
    d.palette.resize(3 * count);
    for (std::size_t i = 0; i < 3 * count; ++i) {
        const unsigned entry = maps[i % 3][i / 3];
        d.palette[i] = static_cast<unsigned char>(small ? entry : (entry + 128) / 257);
    }
    return {};
}

/// What a file without the required field most likely means.
std::uint16_t guessedPhotometric(const TiffDirectory& d) {
    return d.compression->bestRatio == 0 ? PHOTOMETRIC_MINISWHITE
           : d.samples < 3               ? PHOTOMETRIC_MINISBLACK
                                         : PHOTOMETRIC_RGB;
}

ReadResult readSeparated(TIFF* tiff, TiffDirectory& d) {
    d.color = TiffColor::Cmyk;
    const auto inks = field<std::uint16_t>(tiff, TIFFTAG_INKSET, INKSET_CMYK);
    const int count = field<std::uint16_t>(tiff, TIFFTAG_NUMBEROFINKS, 4);
    return inks == INKSET_CMYK || count == 4
               ? ReadResult{}
               : refuse("the four inks of CMYK", "another set of inks");
}

ReadResult readColor(TIFF* tiff, TiffDirectory& d) {
    const auto photometric = field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, guessedPhotometric(d));
    switch (photometric) {
        case PHOTOMETRIC_MINISWHITE:
            d.color = TiffColor::MinIsWhite;
            return {};
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MASK:
            d.color = TiffColor::MinIsBlack;
            return {};
        case PHOTOMETRIC_RGB:
            d.color = TiffColor::Rgb;
            return {};
        case PHOTOMETRIC_PALETTE:
            d.color = TiffColor::Palette;
            return readPalette(tiff, d);
        case PHOTOMETRIC_SEPARATED:
            return readSeparated(tiff, d);
        case PHOTOMETRIC_YCBCR:
            d.color = TiffColor::Rgb;
            // A JPEG decoder converts to RGB on the way.
            d.throughRgba = d.compression->code != COMPRESSION_JPEG || d.planar;
            return {};
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
            d.color = photometric == PHOTOMETRIC_CIELAB ? TiffColor::CieLab : TiffColor::IccLab;
            return {};
        case PHOTOMETRIC_LOGL:
        case PHOTOMETRIC_LOGLUV:
            d.color = photometric == PHOTOMETRIC_LOGL ? TiffColor::LogL : TiffColor::LogLuv;
            return d.compression->code == COMPRESSION_SGILOG ||
                           d.compression->code == COMPRESSION_SGILOG24
                       ? ReadResult{}
                       : refuse("log-encoded colours in SGI log compression", d.compression->name);
        default:
            return refuseNumber("a colour space that can be delivered",
                                "photometric interpretation ", photometric);
    }
}

ReadResult checkSamples(const TiffDirectory& d) {
    // A pixel of more samples would take more memory to decode than it is worth.
    constexpr int kMostInterleaved = 32;
    if (d.samples < d.colorSamples())
        return refuseNumber("a sample for each colour",
                            "samples: ", static_cast<std::uint64_t>(d.samples));
    if (!d.planar && d.samples > kMostInterleaved)
        return refuseNumber("at most 32 samples side by side",
                            "samples: ", static_cast<std::uint64_t>(d.samples));
    const bool isFloat = d.type.kind == SampleKind::Float;
    const bool takesFloat = d.color == TiffColor::MinIsWhite || d.color == TiffColor::MinIsBlack ||
                            d.color == TiffColor::Rgb || d.color == TiffColor::LogL ||
                            d.color == TiffColor::LogLuv;
    if (isFloat && !takesFloat)
        return refuse("integer samples for CMYK, Lab and palette colours", "floating-point ones");
    return {};
}

ReadResult readBlocks(TIFF* tiff, TiffDirectory& d) {
    d.tiled = TIFFIsTiled(tiff) != 0;
    d.blockWidth = d.tiled ? field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0) : d.width;
    d.blockHeight = d.tiled ? field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0)
                            : std::min(d.height, field(tiff, TIFFTAG_ROWSPERSTRIP, d.height));
    if (d.blockWidth == 0 || d.blockHeight == 0)
        return refuse("tiles or strips with pixels", "empty ones");
    const std::uint64_t planes = d.planar ? static_cast<std::uint64_t>(d.samples) : 1;
    const std::uint64_t blocks = saturatedProduct(d.across(), d.down(), planes);
    if ((d.tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff)) != blocks)
        return refuseNumber("a list of blocks that covers the picture once",
                            "another list; blocks needed: ", blocks);
    if (d.throughRgba) return {};
    // Both sides must agree on the size of a row, or a buffer of ours would be too small.
    const std::uint64_t row = d.tiled ? TIFFTileRowSize64(tiff) : TIFFScanlineSize64(tiff);
    if (row != d.rowBytes())
        return refuseNumber("rows without padding between samples", "bytes in a row: ", row);
    return {};
}

Resolution readResolution(TIFF* tiff) {
    const auto usable = [](float value) { return std::isfinite(value) && value > 0; };
    const int unit = field<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    float x = 0, y = 0;
    if (!TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x)) x = 0;
    if (!TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y)) y = x;
    if (!usable(x) || !usable(y) || (unit != kPerInch && unit != kPerCentimetre)) return {};
    return {static_cast<double>(x), static_cast<double>(y), unit};
}

std::vector<std::byte> readProfile(TIFF* tiff) {
    std::uint32_t size = 0;
    const void* bytes = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &bytes) || !bytes) return {};
    const auto* const first = static_cast<const std::byte*>(bytes);
    return {first, first + size};
}

/// What the samples are once the library has decoded them.
void applyDecodedForm(TiffDirectory& d) {
    if (d.color == TiffColor::LogL || d.color == TiffColor::LogLuv) {
        d.type = {SampleKind::Float, 32};
        d.samples = d.colorSamples();
    }
}

}  // namespace

ReadResult readTiffDirectory(const TiffHandle& handle, TiffDirectory& d) {
    TIFF* const tiff = handle.get();
    d.width = field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    d.height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    if (d.width == 0 || d.height == 0) return refuse("a width and a height", "none");
    const auto scheme = field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    d.compression = findTiffCompression(scheme);
    if (!d.compression || !TIFFIsCODECConfigured(scheme))
        return refuseNumber("a compression that can be read", "compression ", scheme);
    d.planar = field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
               PLANARCONFIG_SEPARATE;
    d.samples = d.storedSamples = field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    if (ReadResult refusal = readSampleType(tiff, d)) return refusal;
    d.storedBits = d.type.bits;
    if (ReadResult refusal = readColor(tiff, d)) return refusal;
    setDecodedForm(handle);
    applyDecodedForm(d);
    if (ReadResult refusal = checkSamples(d)) return refusal;
    if (!d.throughRgba) d.alphaSample = findAlpha(tiff, d);
    if (ReadResult refusal = readBlocks(tiff, d)) return refusal;
    d.resolution = readResolution(tiff);
    d.profile = readProfile(tiff);
    return {};
}

void setDecodedForm(const TiffHandle& handle) {
    TIFF* const tiff = handle.get();
    const auto scheme = field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const auto photometric = field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, 0);
    if (scheme == COMPRESSION_JPEG && photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (photometric == PHOTOMETRIC_LOGL || photometric == PHOTOMETRIC_LOGLUV)
        TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT);
    // The library's conversion to RGB turns pictures by this field; ours come as they are stored.
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
}

std::uint64_t leastTiffBytes(const TiffDirectory& d) {
    // Subsampled colour takes little more room than grey.
    const auto samples = d.throughRgba ? 1 : static_cast<std::uint64_t>(d.samplesInBlock());
    const std::uint64_t planes = d.planar ? static_cast<std::uint64_t>(d.samples) : 1;
    const std::uint64_t rowsEach = d.tiled ? saturatedProduct(d.down(), d.blockHeight) : d.height;
    const std::uint64_t columns = d.tiled ? saturatedProduct(d.across(), d.blockWidth) : d.width;
    const std::uint64_t rowBits =
        saturatedProduct(columns, samples * static_cast<std::uint64_t>(d.type.bits));
    const std::uint64_t rowBytes = rowBits / 8 + (rowBits % 8 ? 1 : 0);
    const std::uint64_t rows = saturatedProduct(rowsEach, planes);
    return d.compression->leastBytes(saturatedProduct(rowBytes, rows), rows);
}

}  // namespace rb::imaging
