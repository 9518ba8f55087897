// OpenEXR files: of another program, and with everything the codec library can write.

#include "tests/image/FileParts.h"
#include "tests/image/ImageFiles.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/ForeignPrograms.h"

#include <ImfArray.h>
#include <ImfChannelList.h>
#include <ImfDeepFrameBuffer.h>
#include <ImfDeepScanLineOutputFile.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIntAttribute.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfRgbaFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringVectorAttribute.h>
#include <ImfTiledOutputFile.h>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <pthread.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

int systemReads = 0;

}  // namespace

/// The function of the system, in this program and for the libraries it uses: counts its calls.
extern "C" [[gnu::visibility("default")]] ssize_t pread(int descriptor, void* to, std::size_t count,
                                                        off_t offset) {
    ++systemReads;
    return syscall(SYS_pread64, descriptor, to, count, offset);
}

namespace {

using namespace rb::test;

constexpr int kWidth = 7, kHeight = 5;

/// What a channel holds at a pixel of the window that begins at (0, 0): exact in half and in float.
float valueAt(int channel, int x, int y) {
    return static_cast<float>(channel * 100 + y * 8 + x) / 8 - 5;
}

/// Names of channels and their types.
using Channels = std::vector<std::pair<std::string, Imf::PixelType>>;

/// The values of all channels, in memory of their types, and the way there.
class Samples {
public:
    Samples(const Channels& channels, const Imath::Box2i& window) {
        const int width = window.max.x - window.min.x + 1;
        for (std::size_t i = 0; i < channels.size(); ++i) {
            const auto& [name, type] = channels[i];
            auto& data = m_data[name];
            const std::size_t size = type == Imf::HALF ? 2 : 4;
            for (int y = window.min.y; y <= window.max.y; ++y)
                for (int x = window.min.x; x <= window.max.x; ++x)
                    append(data, type,
                           valueAt(static_cast<int>(i), x - window.min.x, y - window.min.y));
            m_buffer.insert(name, Imf::Slice::Make(type, data.data(), window, size,
                                                   size * static_cast<std::size_t>(width)));
        }
    }
    const Imf::FrameBuffer& frameBuffer() const { return m_buffer; }

private:
    static void append(std::string& data, Imf::PixelType type, float value) {
        const half h(value);
        const auto u = static_cast<unsigned>(std::max(0.0F, value));
        if (type == Imf::HALF) data.append(reinterpret_cast<const char*>(&h), 2);
        if (type == Imf::FLOAT) data.append(reinterpret_cast<const char*>(&value), 4);
        if (type == Imf::UINT) data.append(reinterpret_cast<const char*>(&u), 4);
    }
    std::map<std::string, std::string> m_data;
    Imf::FrameBuffer m_buffer;
};

Imf::Header headerFor(const Channels& channels, const Imath::Box2i& window) {
    Imf::Header header(window, window);
    for (const auto& [name, type] : channels) header.channels().insert(name, Imf::Channel(type));
    return header;
}

constexpr auto kOrigin = [] { return Imath::Box2i({0, 0}, {kWidth - 1, kHeight - 1}); };

std::string written(const TempFolder& folder, const Channels& channels,
                    const Imath::Box2i& window = kOrigin()) {
    const std::string path = folder.file("a.exr");
    const Samples samples(channels, window);
    Imf::OutputFile file(path.c_str(), headerFor(channels, window));
    file.setFrameBuffer(samples.frameBuffer());
    file.writePixels(kHeight);
    return path;
}

/// The values of the given channels, side by side; -1 stands for 0.
std::vector<float> expected(const std::vector<int>& channels) {
    std::vector<float> values;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (int channel : channels) values.push_back(channel < 0 ? 0 : valueAt(channel, x, y));
    return values;
}

std::vector<float> halves(const std::string& path, Format format) {
    return halvesOf(loadFile(path), kWidth, kHeight, format);
}

std::vector<float> floats(const std::string& path, Format format) {
    return floatsOf(loadFile(path), kWidth, kHeight, format);
}

/// An RGB picture as another program decodes it, by way of a plain file of floats.
std::vector<float> decodedByOiiotool(const TempFolder& folder, const std::string& path, int width,
                                     int height) {
    const std::string plain = folder.file("decoded.tif");
    runProgram("oiiotool " + shellWord(path) + " -d float --compression none -o " +
               shellWord(plain));
    return floatsOf(loadFile(plain), width, height, Format::RGB_f);
}

}  // namespace

TEST(ExrReader, delivers_colours_in_their_order_and_type) {
    using enum Imf::PixelType;
    const TempFolder folder;
    // The file holds channels in alphabetical order.
    EXPECT_EQ(halves(written(folder, {{"R", HALF}, {"G", HALF}, {"B", HALF}}), Format::RGB_f16),
              expected({0, 1, 2}));
    EXPECT_EQ(halves(written(folder, {{"R", HALF}, {"G", HALF}, {"B", HALF}, {"A", HALF}}),
                     Format::RGBA_f16),
              expected({0, 1, 2, 3}));
    EXPECT_EQ(floats(written(folder, {{"R", FLOAT}, {"G", FLOAT}, {"B", FLOAT}}), Format::RGB_f),
              expected({0, 1, 2}));
    EXPECT_EQ(floats(written(folder, {{"R", HALF}, {"G", HALF}, {"B", HALF}, {"A", FLOAT}}),
                     Format::RGBA_f),
              expected({0, 1, 2, 3}));
}

TEST(ExrReader, delivers_grey) {
    using enum Imf::PixelType;
    const TempFolder folder;
    EXPECT_EQ(halves(written(folder, {{"Y", HALF}}), Format::L_f16), expected({0}));
    EXPECT_EQ(floats(written(folder, {{"Y", FLOAT}}), Format::L_f), expected({0}));
    EXPECT_EQ(floats(written(folder, {{"depth.Z", FLOAT}}), Format::L_f), expected({0}));
    EXPECT_EQ(halves(written(folder, {{"Y", HALF}, {"A", HALF}}), Format::RGBA_f16),
              expected({0, 0, 0, 1}));
    EXPECT_EQ(floats(written(folder, {{"Y", FLOAT}, {"A", HALF}}), Format::RGBA_f),
              expected({0, 0, 0, 1}));
}

TEST(ExrReader, delivers_whole_numbers_as_float) {
    const TempFolder folder;
    std::vector<float> values = expected({0});
    for (float& value : values) value = std::floor(std::max(0.0F, value));
    EXPECT_EQ(floats(written(folder, {{"id", Imf::UINT}}), Format::L_f), values);
}

TEST(ExrReader, chooses_channels_among_others) {
    using enum Imf::PixelType;
    const TempFolder folder;
    // Only delivered channels decide about the type.
    EXPECT_EQ(halves(written(folder, {{"Z", FLOAT}, {"R", HALF}, {"G", HALF}, {"B", HALF}}),
                     Format::RGB_f16),
              expected({1, 2, 3}));
    EXPECT_EQ(halves(written(folder, {{"b.R", HALF},
                                      {"b.G", HALF},
                                      {"b.B", HALF},
                                      {"a.b.R", HALF},
                                      {"a.b.G", HALF},
                                      {"a.b.B", HALF},
                                      {"a.b.A", HALF},
                                      {"A", HALF}}),
                     Format::RGBA_f16),
              expected({3, 4, 5, 6}));
    EXPECT_EQ(halves(written(folder, {{"layer.R", HALF}, {"Y", HALF}}), Format::L_f16),
              expected({1}));
    EXPECT_EQ(halves(written(folder, {{"r", HALF}, {"g", HALF}, {"b", HALF}}), Format::RGB_f16),
              expected({0, 1, 2}));
    EXPECT_EQ(halves(written(folder, {{"R", HALF}, {"G", HALF}}), Format::RGB_f16),
              expected({0, 1, -1}));
    EXPECT_EQ(refusalOf(contentOf(written(folder, {{"U", HALF}, {"V", HALF}, {"velocity", HALF}}))),
              ": expected channels R, G and B, a channel Y, or one channel, found \"U\", \"V\", "
              "\"velocity\"");
}

TEST(ExrReader, delivers_the_data_window_wherever_it_is) {
    const TempFolder folder;
    for (const Imath::V2i& corner :
         {Imath::V2i(-3, -2), Imath::V2i(1000, 5), Imath::V2i(-1000, 70000)}) {
        const Imath::Box2i window(corner, corner + Imath::V2i(kWidth - 1, kHeight - 1));
        EXPECT_EQ(
            halves(written(folder, {{"R", Imf::HALF}, {"G", Imf::HALF}, {"B", Imf::HALF}}, window),
                   Format::RGB_f16),
            expected({0, 1, 2}));
    }
}

TEST(ExrReader, reads_level_zero_of_tiled_files) {
    const TempFolder folder;
    const std::string path = folder.file("tiled.exr");
    const Channels channels{{"R", Imf::HALF}, {"G", Imf::HALF}, {"B", Imf::HALF}};
    for (const auto mode : {Imf::ONE_LEVEL, Imf::MIPMAP_LEVELS, Imf::RIPMAP_LEVELS}) {
        Imf::Header header = headerFor(channels, kOrigin());
        header.setTileDescription({4, 2, mode});
        {
            Imf::TiledOutputFile file(path.c_str(), header);
            for (int ly = 0; ly < file.numYLevels(); ++ly)
                for (int lx = 0; lx < file.numXLevels(); ++lx) {
                    if (!file.isValidLevel(lx, ly)) continue;
                    const Samples samples(channels, file.dataWindowForLevel(lx, ly));
                    file.setFrameBuffer(samples.frameBuffer());
                    file.writeTiles(0, file.numXTiles(lx) - 1, 0, file.numYTiles(ly) - 1, lx, ly);
                }
        }
        EXPECT_EQ(halves(path, Format::RGB_f16), expected({0, 1, 2})) << mode;
    }
}

TEST(ExrReader, converts_luminance_and_chroma) {
    const TempFolder folder;
    const std::string path = folder.file("chroma.exr");
    // One colour all over, which subsampling cannot hurt.
    constexpr int kSide = 16;
    for (const bool alpha : {false, true}) {
        const std::vector<Imf::Rgba> pixels(kSide * kSide, Imf::Rgba(0.5F, 0.25F, 2.0F, 0.75F));
        {
            Imf::RgbaOutputFile file(path.c_str(), kSide, kSide,
                                     alpha ? Imf::WRITE_YCA : Imf::WRITE_YC);
            file.setFrameBuffer(pixels.data(), 1, kSide);
            file.writePixels(kSide);
        }
        const auto found =
            halvesOf(loadFile(path), kSide, kSide, alpha ? Format::RGBA_f16 : Format::RGB_f16);
        const std::size_t channels = alpha ? 4 : 3;
        ASSERT_EQ(found.size(), kSide * kSide * channels);
        const double expectedColor[] = {0.5, 0.25, 2, 0.75};
        for (std::size_t i = 0; i < found.size(); ++i)
            ASSERT_NEAR(static_cast<double>(found[i]), expectedColor[i % channels],
                        0.01 * expectedColor[i % channels]);
    }
}

TEST(ExrReader, takes_the_first_part_with_a_picture) {
    const TempFolder folder;
    const std::string path = folder.file("parts.exr");
    const Channels useless{{"U", Imf::HALF}, {"V", Imf::HALF}},
        colour{{"B", Imf::FLOAT}, {"G", Imf::FLOAT}, {"R", Imf::FLOAT}}, grey{{"Y", Imf::HALF}};
    std::vector<Imf::Header> headers;
    for (const Channels& channels : {useless, colour, grey}) {
        headers.push_back(headerFor(channels, kOrigin()));
        headers.back().setName("part " + std::to_string(headers.size()));
        headers.back().setType(Imf::SCANLINEIMAGE);
    }
    {
        Imf::MultiPartOutputFile file(path.c_str(), headers.data(),
                                      static_cast<int>(headers.size()));
        int index = 0;
        for (const Channels& channels : {useless, colour, grey}) {
            const Samples samples(channels, kOrigin());
            Imf::OutputPart part(file, index++);
            part.setFrameBuffer(samples.frameBuffer());
            part.writePixels(kHeight);
        }
    }
    EXPECT_EQ(floats(path, Format::RGB_f), expected({2, 1, 0}));
}

TEST(ExrReader, refuses_deep_images) {
    const TempFolder folder;
    const std::string path = folder.file("deep.exr");
    Imf::Header header = headerFor({{"Z", Imf::FLOAT}}, kOrigin());
    header.setType(Imf::DEEPSCANLINE);
    header.compression() = Imf::ZIPS_COMPRESSION;
    {
        Imf::DeepScanLineOutputFile file(path.c_str(), header);
        std::vector<unsigned> counts(kWidth * kHeight, 1);
        float value = 1;
        std::vector<float*> samples(kWidth * kHeight, &value);
        Imf::DeepFrameBuffer buffer;
        buffer.insertSampleCountSlice(
            Imf::Slice(Imf::UINT, reinterpret_cast<char*>(counts.data()), 4, 4 * kWidth));
        buffer.insert("Z", Imf::DeepSlice(Imf::FLOAT, reinterpret_cast<char*>(samples.data()),
                                          sizeof(float*), sizeof(float*) * kWidth, 4));
        file.setFrameBuffer(buffer);
        file.writePixels(kHeight);
    }
    EXPECT_NE(refusalOf(contentOf(path)).find("found deep images only"), std::string::npos);
}

TEST(ExrReader, refuses_subsampled_colours) {
    const TempFolder folder;
    const std::string path = folder.file("subsampled.exr");
    Imf::Header header(4, 4);
    for (const char* name : {"R", "G", "B"})
        header.channels().insert(name, Imf::Channel(Imf::HALF, 2, 2));
    {
        std::vector<half> values(4);
        Imf::FrameBuffer buffer;
        for (const char* name : {"R", "G", "B"})
            buffer.insert(
                name, Imf::Slice(Imf::HALF, reinterpret_cast<char*>(values.data()), 2, 4, 2, 2));
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(buffer);
        file.writePixels(4);
    }
    EXPECT_NE(refusalOf(contentOf(path)).find("the subsampled channel \"R\""), std::string::npos);
}

TEST(ExrReader, reports_density_as_resolution) {
    const TempFolder folder;
    const std::string path = folder.file("density.exr");
    const Channels channels{{"Y", Imf::HALF}};
    Imf::Header header = headerFor(channels, kOrigin());
    header.pixelAspectRatio() = 0.5F;
    Imf::addXDensity(header, 300);
    {
        const Samples samples(channels, kOrigin());
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(samples.frameBuffer());
        file.writePixels(kHeight);
    }
    const auto image = loadFile(path);
    ASSERT_TRUE(image);
    EXPECT_DOUBLE_EQ(image->GetXResolution(), 300);
    EXPECT_DOUBLE_EQ(image->GetYResolution(), 150);
    EXPECT_EQ(image->GetResolutionUnit(), 2);
    const auto plain = loadFile(written(folder, channels));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->GetXResolution(), 0);
    EXPECT_EQ(plain->GetResolutionUnit(), 1);
    KVRMMImageProp prop;
    KVRMMImageSize size;
    ASSERT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0), S_OK);
    EXPECT_EQ(prop.fileFormat, KVRUnicodeString("exr"));
    EXPECT_EQ(prop.channels, 1);
    EXPECT_EQ(prop.bitsPerChannel, 16);
}

TEST(ExrReader, decodes_what_another_program_compresses) {
    const TempFolder folder;
    constexpr int kW = 131, kH = 77;
    const std::string png = folder.file("in.png"), path = folder.file("a.exr");
    runProgram("convert " +
               shellWord(writePortableMap(folder, "in.ppm", gradients(kW, kH, 3, 16))) + " " +
               shellWord(png));
    const auto compare = [&](const std::string& compression, const std::string& more) {
        runProgram("oiiotool " + shellWord(png) + " " + more + " --compression " + compression +
                   " -o " + shellWord(path));
        const auto image = loadFile(path);
        const auto found = more == "-d float" ? floatsOf(image, kW, kH, Format::RGB_f)
                                              : halvesOf(image, kW, kH, Format::RGB_f16);
        EXPECT_TRUE(found == decodedByOiiotool(folder, path, kW, kH)) << compression << ' ' << more;
    };
    for (const char* compression :
         {"none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"})
        compare(compression, "-d half");
    for (const char* compression : {"zip", "piz"}) {
        compare(compression, "-d half --tile 32 16");
        compare(compression, "-d float");
    }
}

TEST(ExrReader, cut_short_anywhere_is_refused) {
    const TempFolder folder;
    const std::string file =
        contentOf(written(folder, {{"R", Imf::HALF}, {"G", Imf::HALF}, {"B", Imf::HALF}}));
    testing::internal::CaptureStderr();
    for (std::size_t length = 4; length < file.size(); length += 3)
        EXPECT_NE(refusalOf(file.substr(0, length)), "") << length;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ExrReader, lines_that_were_never_written_are_refused) {
    const TempFolder folder;
    const std::string path = folder.file("unfinished.exr");
    const Channels channels{{"Y", Imf::HALF}};
    Imf::Header header = headerFor(channels, kOrigin());
    header.compression() = Imf::ZIPS_COMPRESSION;  // a line to the chunk
    {
        const Samples samples(channels, kOrigin());
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(samples.frameBuffer());
        file.writePixels(kHeight - 1);
    }
    // Whatever stands behind the last line that was written.
    EXPECT_NE(refusalOf(contentOf(path) + std::string(1000, 'x')), "");
}

TEST(ExrReader, declared_sizes_are_compared_with_the_file) {
    const TempFolder folder;
    const std::string file = contentOf(written(folder, {{"Y", Imf::HALF}}));
    const std::string window = littleEndian(0, 4) + littleEndian(0, 4) +
                               littleEndian(kWidth - 1, 4) + littleEndian(kHeight - 1, 4);
    const std::size_t dataWindow = file.find(window, file.find("dataWindow"));
    ASSERT_NE(dataWindow, std::string::npos);
    for (const auto& [right, bottom] : {std::pair{65534U, 65534U},
                                        {0x3FFFFFFFU, 4U},
                                        {6U, 0x3FFFFFFFU},
                                        {0x7FFFFFFFU, 0x7FFFFFFFU},
                                        {6U, 0xFFFFFFF0U},
                                        {20000U, 10000U}}) {
        std::string changed = file;
        changed.replace(dataWindow + 8, 8, littleEndian(right, 4) + littleEndian(bottom, 4));
        const long long before = peakAddressSpace();
        EXPECT_NE(refusalOf(changed), "") << right << " x " << bottom;
        EXPECT_LT(peakAddressSpace() - before, 256 << 20) << right << " x " << bottom;
    }
}

TEST(ExrReader, attributes_larger_than_the_file_are_refused_without_their_memory) {
    const TempFolder folder;
    const std::string path = folder.file("attributes.exr");
    const Channels channels{{"Y", Imf::HALF}};
    Imf::Header header = headerFor(channels, kOrigin());
    header.insert("texts", Imf::StringVectorAttribute({"abcd", "efgh"}));
    Imf::addComments(header, "a comment");
    {
        const Samples samples(channels, kOrigin());
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(samples.frameBuffer());
        file.writePixels(kHeight);
    }
    const std::string file = contentOf(path);
    ASSERT_EQ(refusalOf(file), "");
    for (const std::string& mark :
         {std::string("comments\0string\0", 16), littleEndian(4, 4) + "efgh"}) {
        std::string changed = file;
        const std::size_t at = file.find(mark);
        ASSERT_NE(at, std::string::npos);
        changed.replace(mark.size() == 16 ? at + 16 : at, 4, littleEndian(0x7FFFFFFF, 4));
        const long long before = peakAddressSpace();
        EXPECT_NE(refusalOf(changed).find("byte"), std::string::npos);
        EXPECT_LT(peakAddressSpace() - before, 48 << 20);
    }
}

namespace {

/// A grey picture with @p count attributes of its own.
std::string withAttributes(const TempFolder& folder, int count) {
    const std::string path = folder.file("attributes.exr");
    const Channels channels{{"Y", Imf::HALF}};
    Imf::Header header = headerFor(channels, kOrigin());
    for (int i = 0; i < count; ++i) header.insert("a" + std::to_string(i), Imf::IntAttribute(i));
    const Samples samples(channels, kOrigin());
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(samples.frameBuffer());
    file.writePixels(kHeight);
    return path;
}

}  // namespace

TEST(ExrReader, headers_cost_few_calls_of_the_system) {
    const TempFolder folder;
    const std::string path = withAttributes(folder, 30000);  // about 600 KB
    systemReads = 0;
    EXPECT_EQ(halves(path, Format::L_f16), expected({0}));
    EXPECT_LT(systemReads, 1000);
}

TEST(ExrReader, attributes_without_number_are_refused) {
    const TempFolder folder;
    const std::string found = refusalOf(contentOf(withAttributes(folder, 33000)));
    EXPECT_NE(found.find("expected at most 32768 attributes, found more"), std::string::npos)
        << found;
}

TEST(ExrReader, names_of_attributes_that_do_not_end_are_refused) {
    const std::string start = std::string("\x76\x2f\x31\x01", 4) + littleEndian(2, 4);
    EXPECT_EQ(refusalOf(start + std::string(200, 'n')),
              "byte 208: expected a header that ends, found the end of the file");
    EXPECT_EQ(refusalOf(start + std::string(400, 'n')),
              "byte 8: expected a name of at most 255 bytes, found a longer one");
}

TEST(ExrReader, decodes_when_no_thread_can_be_started) {
    // In a process of its own: threads that run already stay.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const TempFolder folder;
    const std::string path = written(folder, {{"Y", Imf::HALF}});
    const auto load = [&path] {
        // A stack that no address space has room for.
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 60);
        pthread_setattr_default_np(&attributes);
        pthread_t thread;
        const bool refused =
            pthread_create(
                &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr) != 0;
        std::exit(refused && halves(path, Format::L_f16) == expected({0}) ? 0 : 1);
    };
    EXPECT_EXIT(load(), testing::ExitedWithCode(0), "");
}
