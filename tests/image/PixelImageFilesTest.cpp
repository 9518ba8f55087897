// What loading and writing have in common, whatever the format: limits, failures of the system,
// and which profile goes along.

#include "tests/image/ImageFiles.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace rb::test;

/// How far files can be read before the device fails; everything when negative.
off_t soundBytes = -1;

}  // namespace

/// The function of the system, in this program and for the libraries it uses.
extern "C" [[gnu::visibility("default")]] ssize_t pread(int descriptor, void* to, std::size_t count,
                                                        off_t offset) {
    if (soundBytes >= 0) {
        const off_t left = soundBytes - offset;
        if (left <= 0) {
            errno = EIO;
            return -1;
        }
        count = std::min(count, static_cast<std::size_t>(left));
    }
    return syscall(SYS_pread64, descriptor, to, count, offset);
}

namespace {

/// Fails all reads of files beyond their first @p bytes.
class FailingDevice {
public:
    explicit FailingDevice(off_t bytes) { soundBytes = bytes; }
    ~FailingDevice() { soundBytes = -1; }
    FailingDevice(const FailingDevice&) = delete;
    FailingDevice& operator=(const FailingDevice&) = delete;
};

/// Lets this process write no file of more than @p bytes: as on a full disk, writing fails for a
/// reason that the system gives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit{bytes, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_former{};
};

/// Sets KVRImagePixelLimit for a while.
class PixelLimit {
public:
    explicit PixelLimit(const std::string& value) {
        setenv("KVRImagePixelLimit", value.c_str(), 1);
    }
    ~PixelLimit() { unsetenv("KVRImagePixelLimit"); }
    PixelLimit(const PixelLimit&) = delete;
    PixelLimit& operator=(const PixelLimit&) = delete;
};

constexpr const char* kFormatNames[] = {"PNG", "TIFF", "BMP", "JPG_FAIR", "JPG", "JPG_HIGH"};
constexpr const char* kFloatFormatNames[] = {"EXR", "HDR"};

Image noise(int width, int height, Format format) {
    Image image = Image::Adopt(new KVRPixelImage(width, height, format));
    std::mt19937 random(7);
    for (std::byte& value : image->GetRawPixels()) value = static_cast<std::byte>(random() >> 8);
    return image;
}

/// The built-in profile, with another colour space in its header (ICC.1, 7.2.6).
KVRVar<KVRMMColorProfile> profileFor(const char* space) {
    const auto sRGB = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    std::vector<std::byte> bytes(sRGB->GetData().begin(), sRGB->GetData().end());
    std::memcpy(bytes.data() + 16, space, 4);
    return KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateFromMemory(bytes));
}

/// PNG compresses a profile and names it; elsewhere its signature stands in the file.
bool holdsProfile(const std::string& file) {
    return file.find("iCCP") != std::string::npos || file.find("acsp") != std::string::npos;
}

std::string sample(const char* name) {
    return std::string(RB_SOURCE_DIR "/samples/images/") + name;
}

}  // namespace

TEST(WriteToFile, a_profile_goes_along_when_it_is_for_what_is_written) {
    const TempFolder folder;
    for (const char* name : kFormatNames)
        for (const Format format : {Format::L, Format::LA, Format::RGB, Format::RGBA})
            for (const char* space : {"GRAY", "RGB ", "CMYK"}) {
                const Image image = noise(9, 5, format);
                const auto profile = profileFor(space);
                ASSERT_TRUE(profile);
                ASSERT_EQ(image->AssignColorProfile(profile.Get(), 0), S_OK);
                const std::string path = folder.file("out");
                ASSERT_EQ(image->WriteToFile(path, name), S_OK);
                // The grey of a bitmap is a palette of colours.
                const bool grey = format == Format::L || format == Format::LA;
                const std::string fitting = grey && std::string(name) != "BMP" ? "GRAY" : "RGB ";
                EXPECT_EQ(holdsProfile(contentOf(path)), space == fitting)
                    << name << ' ' << static_cast<int>(format) << ' ' << space;
            }
}

TEST(WriteToFile, a_failed_write_is_told_in_the_words_of_the_system) {
    const TempFolder folder;
    const std::string path = folder.write("out", "older content");
    const auto expectFailure = [&](const Image& image, const char* name) {
        HRESULT result = S_OK;
        {
            const FileSizeLimit limit(16);
            result = image->WriteToFile(path, name);
        }
        EXPECT_EQ(result, E_FAIL) << name;
        EXPECT_EQ(KVRLastImageError().expected, "the whole file to be written") << name;
        EXPECT_EQ(KVRLastImageError().found, std::strerror(EFBIG)) << name;
        EXPECT_EQ(contentOf(path), "older content") << name;
    };
    // A file that fails while it is written, and one that does when it is closed.
    for (const int side : {300, 3}) {
        for (const char* name : kFormatNames) expectFailure(noise(side, side, Format::RGB), name);
        for (const char* name : kFloatFormatNames)
            expectFailure(noise(side, side, Format::RGB_f), name);
    }
}

TEST(WriteToFile, pixels_in_the_order_of_the_file_are_not_copied) {
    const TempFolder folder;
    constexpr int kSide = 8000;
    const Image image = Image::Adopt(new KVRPixelImage(kSide, kSide, Format::L));
    const long long before = peakAddressSpace();
    ASSERT_EQ(image->WriteToFile(folder.file("out"), "JPG_FAIR"), S_OK);
    EXPECT_LT(peakAddressSpace() - before, kSide * kSide / 2);
}

TEST(ImageFiles, a_device_that_fails_is_told_in_the_words_of_the_system) {
    for (const char* name : {"studio.png", "gradient-16.png", "palette.png", "studio.jpg",
                             "sky-half.exr", "sky.hdr", "tiled.tif"}) {
        const auto size = static_cast<off_t>(std::filesystem::file_size(sample(name)));
        // From the first byte on, and in the pixels.
        for (const off_t sound : {off_t{0}, size / 2}) {
            const FailingDevice device(sound);
            EXPECT_FALSE(Image::Adopt(KVRPixelImage::CreateFromFile(sample(name), 1, 0))) << name;
            EXPECT_EQ(KVRLastImageError().expected, "a file that can be read") << name;
            EXPECT_EQ(KVRLastImageError().found, std::strerror(EIO)) << name;
        }
        EXPECT_TRUE(loadFile(sample(name)));
    }
}

TEST(ImagePixelLimit, holds_for_the_pixels_of_an_image) {
    const std::string png = contentOf(sample("studio.png"));
    const Image image = loadBytes(png);
    int width = 0, height = 0;
    image->GetSize(width, height);
    {
        const PixelLimit limit(std::to_string(width * height));
        EXPECT_EQ(refusalOf(png), "");
    }
    const PixelLimit limit(std::to_string(width * height - 1));
    EXPECT_EQ(refusalOf(png), ": expected at most " + std::to_string(width * height - 1) +
                                  " pixels (KVRImagePixelLimit), found " + std::to_string(width) +
                                  " x " + std::to_string(height) + " pixels");
}

TEST(ImagePixelLimit, that_is_no_number_of_pixels_refuses_every_image_and_no_header) {
    const std::string png = contentOf(sample("studio.png"));
    for (const char* value :
         {"", "0", "-1", "1e9", "100000000 ", "0x10000000", "many", "18446744073709551616"}) {
        const PixelLimit limit(value);
        EXPECT_EQ(refusalOf(png),
                  ": expected KVRImagePixelLimit to be a whole number of pixels from 1 to "
                  "18446744073709551615, found \"" +
                      std::string(value) + "\"");
        KVRMMImageProp prop;
        KVRMMImageSize size;
        EXPECT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(sample("studio.png"), prop,
                                                                        size, 0),
                  S_OK);
    }
    const PixelLimit limit("18446744073709551615");
    EXPECT_EQ(refusalOf(png), "");
}
