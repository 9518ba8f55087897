// Writing of OpenEXR pictures: one part of scanlines, 32-bit float channels, compressed by ZIP (16
// rows to a block, nothing is lost). Grey is a channel "Y", colours are "R", "G" and "B", alpha is
// "A"; there are no float pictures of grey with alpha. Source: OpenEXR, "Technical Introduction"
// and "The OpenEXR File Layout". Values go out as they are: nothing is multiplied by alpha, though
// the format expects it.

#include "RenderingBase/host/imaging/formats/ExrThreads.h"
#include "RenderingBase/host/imaging/formats/ImageWriter.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace rb::imaging {
namespace {

/// The library's view of a file. It goes back once, to say where the blocks are.
class ExrSink final : public Imf::OStream {
public:
    explicit ExrSink(std::FILE* file) : OStream("image"), m_file(file) {}

    /// Throws when the file takes no more, as the library expects.
    void write(const char bytes[], int count) override {
        const auto wanted = static_cast<std::size_t>(count);
        if (std::fwrite(bytes, 1, wanted, m_file) != wanted)
            throw std::runtime_error("a file that takes no more");
    }
    std::uint64_t tellp() override { return static_cast<std::uint64_t>(ftello(m_file)); }
    void seekp(std::uint64_t position) override {
        if (fseeko(m_file, static_cast<off_t>(position), SEEK_SET) != 0)
            throw std::runtime_error("a file that cannot be searched");
    }

private:
    std::FILE* m_file;
};

/// Names of the channels in the order in which they stand in memory.
const char* channelName(int channels, int index) {
    constexpr const char* kColors[] = {"R", "G", "B", "A"};
    return channels == 1 ? "Y" : kColors[index];
}

Imf::Header headerFor(const WritablePicture& picture) {
    Imf::Header header(picture.width, picture.height);
    header.compression() = Imf::ZIP_COMPRESSION;
    for (int i = 0; i < picture.channels; ++i)
        header.channels().insert(channelName(picture.channels, i), Imf::Channel(Imf::FLOAT));
    const Resolution& resolution = picture.resolution;
    const double perInch = resolution.unit == kPerInch         ? resolution.x
                           : resolution.unit == kPerCentimetre ? resolution.x * 2.54
                                                               : 0;
    if (perInch > 0) {
        Imf::addXDensity(header, static_cast<float>(perInch));
        if (resolution.y > 0)
            header.pixelAspectRatio() = static_cast<float>(resolution.y / resolution.x);
    }
    return header;
}

Imf::FrameBuffer samplesOf(const WritablePicture& picture) {
    Imf::FrameBuffer samples;
    // The library takes what it only reads as something to change.
    char* const first = const_cast<char*>(reinterpret_cast<const char*>(picture.pixels));
    const std::size_t pixelBytes = static_cast<std::size_t>(picture.channels) * sizeof(float);
    for (int i = 0; i < picture.channels; ++i)
        samples.insert(channelName(picture.channels, i),
                       Imf::Slice(Imf::FLOAT, first + static_cast<std::size_t>(i) * sizeof(float),
                                  pixelBytes, picture.rowBytes()));
    return samples;
}

}  // namespace

ReadResult writeExr(const WritablePicture& picture, std::FILE* file) try {
    ExrSink sink(file);
    Imf::OutputFile output(sink, headerFor(picture), startExrThreads());
    output.setFrameBuffer(samplesOf(picture));
    output.writePixels(picture.height);
    return {};
} catch (const std::bad_alloc&) {
    throw;
} catch (const std::exception& error) {
    return refuse("a picture that OpenEXR can store", inQuotes(error.what()));
}

}  // namespace rb::imaging
