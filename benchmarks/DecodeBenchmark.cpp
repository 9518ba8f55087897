// Reading of image files, beside the bare library underneath, called as briefly as it can be: the
// same file, fresh memory, the same pixels. Writing of PNG beside libpng's defaults.

#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/public/KVRRbaTextureLoader.h"
#include "benchmarks/RunBenchmarks.h"

#include <Imath/half.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfThreading.h>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <jpeglib.h>
#include <memory>
#include <png.h>
#include <random>
#include <string>
#include <thread>
#include <tiffio.h>
#include <vector>

namespace {

constexpr int kSide = 4096;
using Image = KVRVar<KVRPixelImage>;
using Pixels = std::unique_ptr<unsigned char[]>;

Pixels freshPixels(std::size_t bytes) {
    return std::make_unique_for_overwrite<unsigned char[]>(bytes);
}

/// Large soft shapes, finer structure and a little noise: what a photograph is to a codec.
Image photoLike() {
    auto image =
        Image::Adopt(KVRPixelImage::CreateUnfilled(kSide, kSide, KVRPixelImageFormat::RGB));
    unsigned char* out = image->GetPixelsToModify();
    std::minstd_rand random(7);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            for (int c = 0; c < 3; ++c) {
                const double shape = 60 * std::sin(x * 0.002 + c) * std::cos(y * 0.003 - c) +
                                     20 * std::sin(0.05 * x + 0.03 * y);
                const int noise = static_cast<int>(random() % 7) - 3;
                *out++ = static_cast<unsigned char>(128 + static_cast<int>(shape) + noise);
            }
    return image;
}

std::string folder() {
    static const std::string path = [] {
        const auto made = std::filesystem::temp_directory_path() / "rb-benchmark";
        std::filesystem::create_directories(made);
        return made.string();
    }();
    return path;
}

void writeExr(const KVRPixelImage& image, const std::string& path) {
    const unsigned char* in = image.GetPixelsToRead();
    std::vector<half> halves(std::size_t{3} * kSide * kSide);
    for (std::size_t i = 0; i < halves.size(); ++i)
        halves[i] = half(static_cast<float>(in[i]) / 255.0f);
    Imf::Header header(kSide, kSide);
    header.compression() = Imf::ZIP_COMPRESSION;
    Imf::FrameBuffer frame;
    const char* const names[] = {"R", "G", "B"};
    for (std::size_t c = 0; c < 3; ++c) {
        header.channels().insert(names[c], Imf::Channel(Imf::HALF));
        frame.insert(names[c], Imf::Slice(Imf::HALF, reinterpret_cast<char*>(&halves[c]), 6,
                                          std::size_t{6} * kSide));
    }
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(frame);
    file.writePixels(kSide);
}

/// Deflate with predictor, in strips, by the library's own writer.
void writeTiff(const KVRPixelImage& image, const std::string& path) {
    constexpr std::uint32_t kStripRows = 32;
    constexpr std::size_t kStripBytes = std::size_t{3} * kSide * kStripRows;
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kSide);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kSide);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kStripRows);
    std::vector<unsigned char> strip(kStripBytes);  // the library predicts in place
    for (std::uint32_t i = 0; i < kSide / kStripRows; ++i) {
        std::memcpy(strip.data(), image.GetPixelsToRead() + i * kStripBytes, kStripBytes);
        TIFFWriteEncodedStrip(tiff, i, strip.data(), static_cast<tmsize_t>(kStripBytes));
    }
    TIFFClose(tiff);
}

/// The files that are read, made once and kept for the next run.
std::string sample(const std::string& extension) {
    const std::string path = folder() + "/photo-like." + extension;
    if (std::filesystem::exists(path)) return path;
    const Image image = photoLike();
    if (extension == "exr") {
        writeExr(*image.Get(), path);
    } else if (extension == "tif") {
        writeTiff(*image.Get(), path);
    } else {
        image->WriteToFile(path, extension == "jpg" ? "JPG_HIGH" : "PNG");
    }
    return path;
}

Pixels bareJpeg(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    jpeg_decompress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_stdio_src(&codec, file);
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    const std::size_t rowBytes = std::size_t{3} * codec.output_width;
    Pixels pixels = freshPixels(rowBytes * codec.output_height);
    while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = pixels.get() + rowBytes * codec.output_scanline;
        jpeg_read_scanlines(&codec, &row, 1);
    }
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
    std::fclose(file);
    return pixels;
}

Pixels barePng(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_info(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    const std::size_t height = png_get_image_height(png, info);
    Pixels pixels = freshPixels(rowBytes * height);
    for (std::size_t y = 0; y < height; ++y)
        png_read_row(png, pixels.get() + y * rowBytes, nullptr);
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return pixels;
}

Pixels bareTiff(const std::string& path) {
    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    const auto stripBytes = static_cast<std::size_t>(TIFFStripSize(tiff));
    const std::uint32_t strips = TIFFNumberOfStrips(tiff);
    Pixels pixels = freshPixels(stripBytes * strips);
    for (std::uint32_t i = 0; i < strips; ++i)
        TIFFReadEncodedStrip(tiff, i, pixels.get() + i * stripBytes, -1);
    TIFFClose(tiff);
    return pixels;
}

Pixels bareExr(const std::string& path) {
    if (Imf::globalThreadCount() == 0)
        Imf::setGlobalThreadCount(static_cast<int>(std::thread::hardware_concurrency()));
    Imf::InputFile file(path.c_str());
    Pixels pixels = freshPixels(std::size_t{6} * kSide * kSide);
    Imf::FrameBuffer frame;
    const char* const names[] = {"R", "G", "B"};
    for (std::size_t c = 0; c < 3; ++c)
        frame.insert(names[c], Imf::Slice(Imf::HALF, reinterpret_cast<char*>(pixels.get() + 2 * c),
                                          6, std::size_t{6} * kSide));
    file.setFrameBuffer(frame);
    file.readPixels(0, kSide - 1);
    return pixels;
}

void barePngWrite(const KVRPixelImage& image, const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, kSide, kSide, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (std::size_t y = 0; y < kSide; ++y)
        png_write_row(png, image.GetPixelsToRead() + y * 3 * kSide);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
}

using BareReader = Pixels (*)(const std::string&);

void BM_read(benchmark::State& state, const std::string& extension, BareReader bare) {
    const std::string path = sample(extension);
    const Image image = Image::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0));
    const Pixels expected = bare(path);
    if (!image || std::memcmp(image->GetRawPixels().data(), expected.get(),
                              image->GetRawPixels().size()) != 0) {
        state.SkipWithError("pixels differ from the bare library's");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(Image::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0)));
}

void BM_bare(benchmark::State& state, const std::string& extension, BareReader bare) {
    const std::string path = sample(extension);
    for (auto _ : state) benchmark::DoNotOptimize(bare(path));
}

Image importTexture(const std::string& path) {
    TextureResult result;
    KVRRbaTextureLoader::GetInstance().ImportTexture(path, result);
    return Image::Adopt(result.GetPixelImage());
}

/// What an import does besides reading: the header once more, for the resolution.
void BM_import(benchmark::State& state) {
    const std::string path = sample("jpg");
    const Image image = importTexture(path);
    if (!image || std::memcmp(image->GetPixelsToRead(), bareJpeg(path).get(),
                              image->GetRawPixels().size()) != 0) {
        state.SkipWithError("the import differs from the bare reader");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(importTexture(path).Get());
}

void BM_writePng(benchmark::State& state) {
    const Image image = photoLike();
    const std::string path = folder() + "/written.png";
    image->WriteToFile(path, "PNG");
    const Image again = Image::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0));
    if (!again || !std::ranges::equal(again->GetRawPixels(), image->GetRawPixels())) {
        state.SkipWithError("the file does not read back equal");
        return;
    }
    for (auto _ : state) image->WriteToFile(path, "PNG");
}

void BM_writePngBare(benchmark::State& state) {
    const Image image = photoLike();
    const std::string path = folder() + "/written-bare.png";
    for (auto _ : state) barePngWrite(*image.Get(), path);
}

}  // namespace

int main(int argc, char** argv) {
    const struct {
        const char* extension;
        BareReader bare;
    } formats[] = {{"jpg", bareJpeg}, {"png", barePng}, {"tif", bareTiff}, {"exr", bareExr}};
    for (const auto& format : formats) {
        const std::string name = std::string("read_") + format.extension;
        benchmark::RegisterBenchmark((name + "/ours/4096").c_str(), BM_read, format.extension,
                                     format.bare)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RegisterBenchmark((name + "/bare/4096").c_str(), BM_bare, format.extension,
                                     format.bare)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    benchmark::RegisterBenchmark("import_jpg/ours/4096", BM_import)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark("import_jpg/bare/4096", BM_bare, "jpg", bareJpeg)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark("write_png/ours/4096", BM_writePng)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark("write_png/bare/4096", BM_writePngBare)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    const int status = rb::benchmarks::runBenchmarks(argc, argv);
    if (status != 0) return status;
    for (const char* const name : {"written.png", "written-bare.png"}) {
        const auto path = std::filesystem::path(folder()) / name;
        if (!std::filesystem::exists(path)) continue;
        std::fprintf(stderr, "%s: %.1f MB\n", name,
                     static_cast<double>(std::filesystem::file_size(path)) / 1e6);
    }
}
