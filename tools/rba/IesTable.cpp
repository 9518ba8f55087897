#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Photometry.h"
#include "tools/rba/TableFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

namespace rb::cli {
namespace {

using Image = KVRVar<KVRPixelImage>;

struct TableArguments {
    std::string path, out, orientation = "0,0,0";
    int theta = 0, phi = 0, channels = 1;
};

constexpr std::int64_t kMostValues = std::int64_t{1} << 28;
constexpr const char* kExtensions = "bin, csv, json, exr or hdr";

/// The name that `KVRPixelImage::WriteToFile` has for a picture; null for a table of numbers.
const char* pictureWriter(const std::string& extension) {
    return extension == "exr" ? "EXR" : extension == "hdr" ? "HDR" : nullptr;
}

KVRPixelImageFormat pictureFormat(int channels) {
    return channels == 1   ? KVRPixelImageFormat::L_f
           : channels == 3 ? KVRPixelImageFormat::RGB_f
                           : KVRPixelImageFormat::RGBA_f;
}

void checkCount(const char* option, int count) {
    if (count < 1)
        throw UsageError(std::string(option) + ": expected a number from 1 on, found " +
                         std::to_string(count));
}

void checkUsage(const TableArguments& arguments, const std::string& extension) {
    checkCount("--theta", arguments.theta);
    checkCount("--phi", arguments.phi);
    checkCount("--channels", arguments.channels);
    const bool isPicture = pictureWriter(extension);
    if (!isPicture && !tableWriterOf(extension))
        throw UsageError(named(arguments.out) + ": expected a name that ends in " + kExtensions +
                         ", found '" + extension + "'");
    const int channels = arguments.channels;
    if (isPicture && channels != 1 && channels != 3 && channels != 4)
        throw UsageError("--channels: expected 1, 3 or 4 for a picture (" + extension +
                         "), found " + std::to_string(channels));
}

void checkSize(const TableArguments& arguments, bool isPicture) {
    const std::int64_t cells = std::int64_t{arguments.theta} * arguments.phi;
    if (cells > kMostValues || cells * arguments.channels > kMostValues)
        throw Failure(arguments.out, "expected a table of at most " + std::to_string(kMostValues) +
                                         " values, found a size of " +
                                         std::to_string(arguments.theta) + " x " +
                                         std::to_string(arguments.phi) + " x " +
                                         std::to_string(arguments.channels));
    if (isPicture && !KVRPixelImage::IsWithinPixelLimit(arguments.phi, arguments.theta))
        throw Failure(arguments.out,
                      "expected a picture of no more pixels than KVRImagePixelLimit allows, found "
                      "a size of " +
                          std::to_string(arguments.phi) + " x " + std::to_string(arguments.theta));
}

struct Extent {
    float least = std::numeric_limits<float>::quiet_NaN();
    float most = std::numeric_limits<float>::quiet_NaN();
};

/// What is not a number does not count.
Extent extentOf(std::span<const float> values) {
    Extent extent;
    for (const float value : values) {
        extent.least = std::fmin(extent.least, value);
        extent.most = std::fmax(extent.most, value);
    }
    return extent;
}

/// Fills and writes a table, and tells its extent.
class TableMaker {
public:
    TableMaker(const TableArguments& arguments, const KVRMathVector& orientation)
        : m_arguments(arguments), m_orientation(orientation) {}

    Extent make(const std::string& extension) {
        const Photometry photometry = loadPhotometry(m_arguments.path);
        try {
            if (const char* const writer = pictureWriter(extension))
                return makePicture(photometry, writer);
            return makeNumbers(photometry, tableWriterOf(extension));
        } catch (const std::bad_alloc&) {
            throw Failure(m_arguments.out, "expected memory for the table, found none");
        }
    }

private:
    std::size_t valueCount() const {
        return static_cast<std::size_t>(m_arguments.theta) *
               static_cast<std::size_t>(m_arguments.phi) *
               static_cast<std::size_t>(m_arguments.channels);
    }
    void resample(const Photometry& photometry, float* table) const {
        fillTable(photometry.record, m_arguments.theta, m_arguments.phi, m_arguments.channels,
                  m_orientation, table);
    }
    Extent makePicture(const Photometry& photometry, const char* writer) const {
        const Image image = Image::Adopt(KVRPixelImage::CreateUnfilled(
            m_arguments.phi, m_arguments.theta, pictureFormat(m_arguments.channels)));
        if (!image || !image->GetFloatingPixelsToModify()) throw std::bad_alloc();
        float* const table = image->GetFloatingPixelsToModify();
        resample(photometry, table);
        writeImage(*image.Get(), m_arguments.out, writer);
        return extentOf({table, valueCount()});
    }
    Extent makeNumbers(const Photometry& photometry, TableWriter write) const {
        const auto values = std::make_unique_for_overwrite<float[]>(valueCount());
        resample(photometry, values.get());
        const std::span<const float> table(values.get(), valueCount());
        write(m_arguments.out, {table, m_arguments.theta, m_arguments.phi, m_arguments.channels});
        return extentOf(table);
    }

    const TableArguments& m_arguments;
    const KVRMathVector& m_orientation;
};

int runTable(Context& context, const TableArguments& arguments) {
    const std::string extension = lowerExtension(arguments.out);
    checkUsage(arguments, extension);
    const auto [x, y, z] =
        readThreeNumbers<double>("--orientation", arguments.orientation, "0,1.57,0");
    const KVRMathVector orientation(x, y, z);
    checkSize(arguments, pictureWriter(extension) != nullptr);
    const Extent extent = TableMaker(arguments, orientation).make(extension);
    if (context.json)
        printJson(*context.out, {{"path", arguments.out},
                                 {"theta", arguments.theta},
                                 {"phi", arguments.phi},
                                 {"channels", arguments.channels},
                                 {"min", jsonNumber(extent.least)},
                                 {"max", jsonNumber(extent.most)},
                                 {"status", S_OK}});
    else if (!context.quiet)
        *context.out << onOneLine(arguments.out) << ": " << arguments.theta << " x "
                     << arguments.phi << " x " << arguments.channels << ", "
                     << shortText(extent.least) << " to " << shortText(extent.most) << " cd\n";
    return kDone;
}

}  // namespace

void addIesTable(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<TableArguments>(
        group, context, runTable,
        {"table",
         "Resample a photometric file over a grid of directions. Row i has the polar angle pi i / "
         "theta from straight up (+z), column j the azimuth 2 pi j / phi; values are candelas, the "
         "same in all channels of a cell. The extension of OUT chooses the form: bin (32-bit "
         "floats, little endian, row by row), csv (a line a row), json, or pictures of floats, exr "
         "and hdr, with 1, 3 or 4 channels (hdr drops the fourth).",
         "rba ies table street.ies --theta 256 --phi 512 -o street.exr\n"
         "rba ies table street.ies --theta 64 --phi 128 --orientation 0,1.5708,0 -o street.csv"});
    addArgument(command, "PATH", arguments.path, "Photometric file");
    addOption(command, "--theta", arguments.theta, "N", "Rows")->required();
    addOption(command, "--phi", arguments.phi, "N", "Columns")->required();
    addOption(command, "--channels", arguments.channels, "N", "Equal values in a cell; default 1");
    addOption(
        command, "--orientation", arguments.orientation, "X,Y,Z",
        "Turns the luminaire: Euler angles in radians, about z first, then x, then y; about x by "
        "the right-hand rule, about y and z against it; default 0,0,0");
    addOption(command, "-o", arguments.out, "OUT", "File to write")->required();
}

}  // namespace rb::cli
