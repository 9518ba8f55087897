// The mirror ball against the loop that its definition is: equal bytes, whatever is estimated.

#include "tests/image/PlainMirrorBall.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace rb::test {
namespace {

using Picture = std::vector<std::uint8_t>;

/// All texels of all faces differ.
std::vector<Picture> numberedFaces(std::size_t texels) {
    std::vector<Picture> faces(6);
    std::uint32_t number = 0x02000000;
    for (Picture& face : faces)
        for (std::size_t i = 0; i < texels; ++i, ++number)
            for (int shift = 0; shift < 32; shift += 8)
                face.push_back(static_cast<std::uint8_t>(number >> shift));
    return faces;
}

void expectPlainPixels(std::size_t width, std::size_t height) {
    const std::vector<Picture> faces = numberedFaces(width * height);
    kernels::CubePictures cube{{}, width, height};
    for (std::size_t i = 0; i < faces.size(); ++i) cube.faces[i] = faces[i].data();
    const Picture expected = plainMirrorBall(cube);
    for (const auto render :
         {kernels::renderMirrorBall, kernels::detail::renderMirrorBallPortable}) {
        Picture ball(expected.size(), 99);
        render(cube, ball);
        EXPECT_TRUE(ball == expected) << width << " x " << height;
    }
}

}  // namespace

TEST(MirrorBallPlain, square_faces_of_every_small_size) {
    for (std::size_t size = 1; size <= 80; ++size) expectPlainPixels(size, size);
}

TEST(MirrorBallPlain, larger_square_faces) {
    // The rays of both diagonals hit edges of the box.
    for (const std::size_t size : {127U, 128U, 255U, 256U, 257U, 333U, 512U, 513U, 700U})
        expectPlainPixels(size, size);
}

TEST(MirrorBallPlain, faces_of_other_shapes) {
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        const std::size_t width = 2 + random() % 150;
        expectPlainPixels(width, 1 + random() % 150);
    }
    expectPlainPixels(256, 128);
    expectPlainPixels(128, 256);
    expectPlainPixels(300, 200);
}

TEST(MirrorBallPlain, faces_much_longer_than_wide_and_wider_than_long) {
    for (const std::size_t length : {15U, 16U, 17U, 100U, 1000U}) {
        expectPlainPixels(4, 4 * length);
        if (length <= 100) expectPlainPixels(4 * length, 4);
    }
}

}  // namespace rb::test
