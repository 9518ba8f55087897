// Loads the image named on the command line, tells its size and puts a half through the codec.
#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "RenderingBase/public/openexr_half.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const auto image = KVRVar<KVRPixelImage>::Adopt(
        KVRRbaImageServices::CreatePixelImageFromFullPath(argv[1], {}, 96));
    if (!image) {
        std::fprintf(stderr, "%s\n", KVRLastImageError().Message().CastToCharPtr());
        return 1;
    }
    int width = 0, height = 0;
    image->GetSize(width, height);
    const double half = static_cast<double>(half_to_float(float_to_half(1.5f)));
    std::printf("%d x %d, half %g\n", width, height, half);
    return half == 1.5 ? 0 : 1;
}
