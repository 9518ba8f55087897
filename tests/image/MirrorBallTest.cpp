// The mirror ball against a ray caster that is written differently: it asks where on a cube a ray
// ends by the largest coordinate, in long double, and knows nothing of the order of sides.

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace rb::test {
namespace {

using Picture = std::vector<std::uint8_t>;
using Real = long double;

enum Side {
    PlusY,
    MinusY,
    PlusX,
    MinusX,
    PlusZ,
    MinusZ
};

constexpr std::uint32_t kBlackWithAlpha1 = 0x01000000;

std::uint32_t pixelAt(const Picture& picture, std::size_t index) {
    return picture[4 * index] | static_cast<std::uint32_t>(picture[4 * index + 1]) << 8 |
           static_cast<std::uint32_t>(picture[4 * index + 2]) << 16 |
           static_cast<std::uint32_t>(picture[4 * index + 3]) << 24;
}

/// Six pictures whose texels all differ: red the column, green the row, blue the face.
std::vector<Picture> markedFaces(std::size_t width, std::size_t height) {
    std::vector<Picture> faces;
    for (std::uint8_t face = 0; face < 6; ++face) {
        Picture picture;
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
                for (const std::size_t value : {x, y, std::size_t{face} * 40, std::size_t{200}})
                    picture.push_back(static_cast<std::uint8_t>(value));
        faces.push_back(picture);
    }
    return faces;
}

Picture rendered(const std::vector<Picture>& faces, std::size_t width, std::size_t height) {
    kernels::CubePictures cube{{}, width, height};
    for (std::size_t i = 0; i < faces.size(); ++i) cube.faces[i] = faces[i].data();
    Picture ball(4 * width * width, 99);
    kernels::renderMirrorBall(cube, ball);
    return ball;
}

/// Where a ray from near the middle of the box ends: the side, and how far along it from -1 to 1.
struct Hit {
    Side side;
    Real across, along;  ///< In the direction of the columns and of the rows.
    Real margin;         ///< How far from an edge of the box, as a part of its half side.
};

Hit cast(const Real (&from)[3], const Real (&ray)[3], const Real (&half)[3]) {
    Real best = -1;
    int axis = 0;
    for (int i = 0; i < 3; ++i) {
        if (ray[i] == 0) continue;
        const Real t = ((ray[i] > 0 ? half[i] : -half[i]) - from[i]) / ray[i];
        if (best < 0 || t < best) {
            best = t;
            axis = i;
        }
    }
    Real hit[3], margin = 1;
    for (int i = 0; i < 3; ++i) {
        hit[i] = (from[i] + best * ray[i]) / half[i];
        if (i != axis) margin = std::min(margin, 1 - std::abs(hit[i]));
    }
    const bool positive = ray[axis] > 0;
    if (axis == 1) return {positive ? PlusY : MinusY, hit[0], positive ? hit[2] : -hit[2], margin};
    if (axis == 0) return {positive ? PlusX : MinusX, positive ? hit[2] : -hit[2], hit[1], margin};
    return {positive ? PlusZ : MinusZ, hit[0], hit[1], margin};
}

/// The place from -1 to 1 in texels.
Real texels(Real place, std::size_t count) { return (place + 1) / 2 * static_cast<Real>(count); }

/// Compares all pixels whose texel is not in doubt; returns how many there were.
std::size_t compareWithRays(std::size_t width, std::size_t height) {
    const std::vector<Picture> faces = markedFaces(width, height);
    const Picture ball = rendered(faces, width, height);
    const Real size = static_cast<Real>(width) - 1;
    const Real half[3] = {static_cast<Real>(width) / 100, static_cast<Real>(height) / 100,
                          static_cast<Real>(width) / 100};
    std::size_t compared = 0;
    for (std::size_t row = 0; row < width; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            const Real u = 2 * static_cast<Real>(column) / size - 1;
            const Real v = 2 * static_cast<Real>(row) / size - 1;
            const std::uint32_t pixel = pixelAt(ball, row * width + column);
            if (std::abs(u * u + v * v - 1) < 1e-9L) continue;
            if (u * u + v * v > 1) {
                EXPECT_EQ(pixel, kBlackWithAlpha1) << column << ' ' << row;
                ++compared;
                continue;
            }
            const Real w = -std::sqrt(1 - u * u - v * v);
            // A view along z, mirrored at a plane with the normal (u, v, w).
            const Real from[3] = {u / 1000, v / 1000, w / 1000};
            const Real ray[3] = {-2 * w * u, -2 * w * v, 1 - 2 * w * w};
            const Hit hit = cast(from, ray, half);
            const Real x = texels(hit.across, width), y = texels(hit.along, height);
            const auto isInDoubt = [](Real place) {
                return std::abs(place - std::round(place)) < 1e-6L;
            };
            if (hit.margin < 1e-6L || isInDoubt(x) || isInDoubt(y)) continue;
            // Where a formula counts from the far end a texel too much is counted.
            std::size_t texelColumn = static_cast<std::size_t>(x) + (hit.side == PlusX ? 1 : 0);
            const std::size_t texelRow = static_cast<std::size_t>(y) + (hit.side == MinusY ? 1 : 0);
            const std::size_t index = texelRow * width + texelColumn;
            const std::uint32_t expected =
                index < width * height ? pixelAt(faces[hit.side], index) : kBlackWithAlpha1;
            EXPECT_EQ(pixel, expected) << column << ' ' << row;
            ++compared;
        }
    }
    return compared;
}

TEST(MirrorBall, pixels_are_those_of_a_ray_caster) {
    for (const std::size_t size : {2U, 16U, 33U, 128U, 255U})
        EXPECT_GE(compareWithRays(size, size), size * size * 8 / 10) << size;
}

TEST(MirrorBall, faces_need_not_be_square) {
    EXPECT_GT(compareWithRays(64, 40), 3200U);
    EXPECT_GT(compareWithRays(40, 100), 1200U);
}

TEST(MirrorBall, the_middle_shows_what_is_behind_the_eye) {
    // n = (0, 0, -1), so the ray goes back along -z to the middle of that face.
    const auto faces = markedFaces(33, 33);
    EXPECT_EQ(pixelAt(rendered(faces, 33, 33), 16 * 33 + 16), pixelAt(faces[MinusZ], 16 * 33 + 16));
}

TEST(MirrorBall, edges_belong_to_the_side_that_is_tried_first) {
    const auto faces = markedFaces(33, 33);
    const Picture ball = rendered(faces, 33, 33);
    const auto texel = [&](Side side, std::size_t column, std::size_t row) {
        return pixelAt(faces[side], row * 33 + column);
    };
    // On the diagonals, rays end where a side above or below meets one to the left or right.
    EXPECT_EQ(pixelAt(ball, 6 * 33 + 6), texel(MinusY, 0, 1));
    EXPECT_EQ(pixelAt(ball, 6 * 33 + 26), texel(MinusY, 0, 2));
    // The circle belongs to the ball.
    EXPECT_EQ(pixelAt(ball, 16 * 33), texel(PlusZ, 16, 16));
    EXPECT_EQ(pixelAt(ball, 16), texel(PlusZ, 16, 16));
}

TEST(MirrorBall, corners_are_black_with_alpha_1) {
    const Picture ball = rendered(markedFaces(33, 33), 33, 33);
    for (const std::size_t corner : {0U, 32U, 32U * 33U, 33U * 33U - 1})
        EXPECT_EQ(pixelAt(ball, corner), kBlackWithAlpha1);
}

TEST(MirrorBall, a_ball_of_one_pixel_hits_nothing) {
    const Picture ball = rendered(markedFaces(1, 1), 1, 1);
    EXPECT_EQ(pixelAt(ball, 0), kBlackWithAlpha1);
}

}  // namespace
}  // namespace rb::test
