#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

using Image = KVRVar<KVRPixelImage>;
using Services = KVRRbaImageServices;

/// A command that derives an image from another one of the same size.
struct Derivation {
    const char* name;
    const char* help;
    const char* service;
    KVRPixelImage* (*derive)(KVRPixelImage* source);
};

constexpr Derivation kDerivations[] = {
    {"grey",
     "Make a picture grey: each pixel becomes its HSL lightness, half way between its "
     "greatest and its smallest colour.",
     "ComputeGreyScaleImage",
     [](KVRPixelImage* source) { return Services::ComputeGreyScaleImage(source); }},
    {"mono",
     "Make a picture black and white: a pixel whose red, green and blue add up to 383 or "
     "more becomes white.",
     "ComputeMonochromaImage",
     [](KVRPixelImage* source) { return Services::ComputeMonochromaImage(source); }},
    {"negative", "Make the negative of a picture. Its transparency stays.", "ComputeNegativeImage",
     [](KVRPixelImage* source) { return Services::ComputeNegativeImage(source); }},
    {"alpha-invert",
     "Make transparent what is opaque, and the reverse; jpg and jpeg drop transparency.",
     "ComputeAlphaInvertImage",
     [](KVRPixelImage* source) { return Services::ComputeAlphaInvertImage(source); }},
    {"mask", "Make the mask of a picture: white where it is transparent, black where it is opaque.",
     "GenerateMaskFromAlpha",
     [](KVRPixelImage* source) { return Services::GenerateMaskFromAlpha(source); }},
    {"bump", "Make the normal map of a picture, whose brightness is taken for its height.",
     "GenerateBumpMap", [](KVRPixelImage* source) { return Services::GenerateBumpMap(source); }},
};

struct DeriveArguments {
    std::string in, out;
    const Derivation* derivation = nullptr;
};

int runDerive(Context& context, const DeriveArguments& arguments) {
    const char* const writer = writerOf(arguments.out);
    const Image source = loadImage(arguments.in);
    checkDisplayable(arguments.in, *source.Get());
    const Derivation& derivation = *arguments.derivation;
    const Image result = Image::Adopt(measured("KVRRbaImageServices", derivation.service,
                                               [&] { return derivation.derive(source.Get()); }));
    if (!result) throw Failure(arguments.in, "expected memory for the result, found none");
    writeImage(*result.Get(), arguments.out, writer);
    printImage(context, arguments.out, *result.Get());
    return kDone;
}

void addDerivation(CLI::App& group, Context& context, const Derivation& derivation) {
    const std::string example = std::string("rba image ") + derivation.name + " oak.png out.png";
    auto [command, arguments] = addCommand<DeriveArguments>(
        group, context, runDerive,
        {derivation.name,
         std::string(derivation.help) +
             " The extension of OUT chooses the file format; pictures of half and float pixels "
             "have to be converted to 8 bits first, with: rba image convert.",
         example});
    arguments.derivation = &derivation;
    addArgument(command, "IN", arguments.in, "Image file to read");
    addArgument(command, "OUT", arguments.out, "Image file to write");
}

}  // namespace

void addImageDerivations(CLI::App& group, Context& context) {
    for (const Derivation& derivation : kDerivations) addDerivation(group, context, derivation);
}

}  // namespace rb::cli
