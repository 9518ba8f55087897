// What the headers promise for several threads: loading, one shared profile, a reason for each.

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/ImageFiles.h"
#include "tests/support/TempFolder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace rb::test {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 20;

/// Runs work(thread) on several threads at once.
template <class Work>
void onThreads(const Work& work) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(work, thread);
    for (std::thread& thread : threads) thread.join();
}

std::string sample(const char* name) {
    return std::string(RB_SOURCE_DIR "/samples/images/") + name;
}

std::vector<std::byte> pixelsOf(const Image& image) {
    return {image->GetRawPixels().begin(), image->GetRawPixels().end()};
}

}  // namespace

TEST(ImageThreads, load_the_same_files_at_once) {
    const std::vector<std::string> files = {sample("studio.jpg"), sample("wide-gamut.png"),
                                            sample("tiled.tif"), sample("sky.hdr")};
    std::vector<std::vector<std::byte>> expected;
    for (const std::string& file : files) expected.push_back(pixelsOf(loadFile(file)));
    std::atomic<int> wrong{0};
    onThreads([&](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            const auto i = static_cast<std::size_t>(thread + round) % files.size();
            const Image image = Image::Adopt(KVRPixelImage::CreateFromFile(files[i], 1, 0));
            if (!image || pixelsOf(image) != expected[i]) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ImageThreads, convert_with_one_shared_profile) {
    const Image tagged = loadFile(sample("wide-gamut.png"));
    const Image converted = Image::Adopt(new KVRPixelImage(*tagged.Get()));
    ASSERT_EQ(converted->ApplyColorProfile(nullptr, 0), S_OK);
    const std::vector<std::byte> expected = pixelsOf(converted);
    ASSERT_NE(expected, pixelsOf(tagged));
    std::atomic<int> wrong{0};
    onThreads([&](int) {
        for (int round = 0; round < kRounds; ++round) {
            const Image mine = Image::Adopt(new KVRPixelImage(*tagged.Get()));
            if (mine->ApplyColorProfile(nullptr, 0) != S_OK || pixelsOf(mine) != expected) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ImageThreads, each_know_their_own_reason) {
    const TempFolder folder;
    std::atomic<int> wrong{0};
    onThreads([&](int thread) {
        const std::string mine = folder.file("missing-" + std::to_string(thread) + ".png");
        for (int round = 0; round < kRounds; ++round) {
            const Image image = Image::Adopt(KVRPixelImage::CreateFromFile(mine, 1, 0));
            if (image || KVRLastImageError().file != KVRUnicodeString(mine)) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace rb::test
