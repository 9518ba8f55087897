#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Textures.h"

#include <algorithm>
#include <array>
#include <span>

namespace rb::cli {
namespace {

using Image = KVRVar<KVRPixelImage>;
using Faces = std::array<Image, 6>;

struct MirrorBallArguments {
    std::vector<std::string> paths;  // what is read, then what is written
};

struct Size {
    int width = 0, height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

Size sizeOf(const KVRPixelImage& image) {
    Size size;
    image.GetSize(size.width, size.height);
    return size;
}

std::string textOf(const Size& size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height) + " px";
}

/// The picture of the library; the texture is read on its own first, for a plain word on files that
/// would give another picture.
Image ballOfCube(const std::string& path) {
    const std::string expected = "expected a dds file with a cube map, found ";
    {
        const Texture texture = Texture::load(path);
        if (texture.container() != "dds")
            throw Failure(path, expected + "a " + texture.container() + " file");
        if (!texture.isCube()) throw Failure(path, expected + "a " + texture.description());
    }
    if (const std::string extension = lowerExtension(path); extension != "dds")
        throw Failure(path, "expected a name that ends in .dds, found '" + extension + "'");
    return loadImage(path);
}

/// Throws Failure when one of the faces has not the size that most of them have.
void checkSizes(std::span<const std::string> paths, const Faces& faces) {
    const auto count = [&](const Image& face) {
        return std::ranges::count_if(
            faces, [&](const Image& other) { return sizeOf(*other.Get()) == sizeOf(*face.Get()); });
    };
    const auto usual = std::ranges::max_element(faces, {}, count);
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const Size expected = sizeOf(*usual->Get()), found = sizeOf(*faces[i].Get());
        if (!(found == expected))
            throw Failure(paths[i], "expected a face of " + textOf(expected) + " as " +
                                        paths[static_cast<std::size_t>(usual - faces.begin())] +
                                        " is, found " + textOf(found));
    }
}

Image ballOfFaces(std::span<const std::string> paths) {
    Faces faces;
    std::ranges::transform(paths, faces.begin(),
                           [](const std::string& path) { return loadImage(path); });
    checkSizes(paths, faces);
    Image ball = mirrorBallOf(faces);
    if (!ball) throw Failure(paths.front(), "expected memory for the mirror ball, found none");
    return ball;
}

int runMirrorBall(Context& context, const MirrorBallArguments& arguments) {
    const std::span<const std::string> paths(arguments.paths);
    if (paths.size() != 2 && paths.size() != 7)
        throw UsageError("expected IN.dds and OUT, or six faces and OUT, found " +
                         std::to_string(paths.size()) + (paths.size() == 1 ? " path" : " paths") +
                         "; see 'rba image mirror-ball --help'");
    const std::string& out = paths.back();
    const char* const writer = writerOf(out);
    const Image ball = paths.size() == 2 ? ballOfCube(paths.front()) : ballOfFaces(paths.first(6));
    writeImage(*ball.Get(), out, writer);
    const Size size = sizeOf(*ball.Get());
    if (context.json)
        printJson(*context.out, {{"path", out}, {"width", size.width}, {"height", size.height}});
    else if (!context.quiet)
        *context.out << onOneLine(out) << ": " << textOf(size) << '\n';
    return kDone;
}

}  // namespace

void addImageMirrorBall(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<MirrorBallArguments>(
        group, context, runMirrorBall,
        {"mirror-ball",
         "Draw a mirroring ball inside a cube map. Give IN.dds and OUT, or the six faces as "
         "pictures of one size and OUT: F1 F2 F3 F4 F5 F6 OUT. With x to the right, y downwards "
         "and z away from the eye, F1 is the face at +y, F2 at -y, F3 at +x, F4 at -x, F5 at +z "
         "behind the ball, F6 at -z behind the eye. The ball is as wide as a face; of a cube map "
         "with mip-maps level 1 is taken, which is half as wide. Half and float faces are clamped "
         "to 0..1. Pixels outside the ball are black with alpha 1 of 255. The extension of OUT "
         "chooses the file format.",
         "rba image mirror-ball sky.dds ball.png\n"
         "rba image mirror-ball below.png above.png right.png left.png ahead.png back.png "
         "ball.png"});
    addArgument(command, "FILE", arguments.paths, "What is read, then what is written");
}

}  // namespace rb::cli
