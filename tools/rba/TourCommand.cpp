#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Interrupt.h"
#include "tools/rba/Output.h"
#include "tools/rba/OutputFile.h"
#include "tools/rba/Profile.h"
#include "tools/rba/tour/Tour.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace rb::cli {
namespace {

namespace fs = std::filesystem;

struct TourArguments {
    std::string folder;
    std::string samples;
};

class ScratchFolder {
public:
    ScratchFolder() {
        std::error_code error;
        std::string pattern = (fs::temp_directory_path(error) / "rba-tour-XXXXXX").string();
        if (error || !mkdtemp(pattern.data()))
            throw Failure(pattern, "expected a temporary folder, found no place for one");
        m_path = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

fs::path ownProgram() {
    std::error_code error;
    fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) throw Failure("/proc/self/exe", "expected this program, found " + error.message());
    return program;
}

/// The folder that was given, or the one that belongs to the program: in a build as in an
/// installation it stands at the same place beside it.
fs::path samplesFolder(const std::string& given, const fs::path& program) {
    fs::path folder = given;
    if (given.empty())
        folder = program.parent_path().parent_path() / "share" / "RenderingBase" / "samples";
    std::error_code error;
    if (!fs::is_directory(folder, error))
        throw Failure(folder.string(), "expected a folder of samples, found " +
                                           (error ? error.message() : "something else"));
    return folder;
}

void writeFile(const fs::path& path, const std::string& content) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error)
        throw Failure(path.parent_path().string(),
                      "expected a folder to write to, found " + error.message());
    OutputFile file(path.string());
    file.write(content);
    file.commit();
}

void printResult(Context& context, const std::string& path) {
    if (context.json) {
        Json titles = Json::array();
        for (const tour::Section& section : tour::sections()) titles.push_back(section.title);
        printJson(*context.out, {{"path", path}, {"sections", titles}});
    } else if (!context.quiet) {
        *context.out << onOneLine(path) << '\n';
    }
}

int runTour(Context& context, const TourArguments& arguments) try {
    const InterruptGuard guard;
    const ScratchFolder scratch;
    startProfile();
    const fs::path program = ownProgram();
    const fs::path path = fs::path(arguments.folder) / "index.html";
    const tour::Page page = tour::buildPage(
        {samplesFolder(arguments.samples, program), scratch.path(), program, context.quiet});
    writeFile(path, page.html);
    printResult(context, path.string());
    for (const std::string& failure : page.failures) printError(failure);
    return page.failures.empty() ? kDone : kFailed;
} catch (const Interrupted&) {
    InterruptGuard::endProgram();
}

}  // namespace

void addTourCommand(CLI::App& program, Context& context) {
    auto [command, arguments] = addCommand<TourArguments>(
        program, context, runTour,
        {"tour",
         "Write a page that shows what the library does with sample files. OUTDIR/index.html has "
         "the pictures, plots, tables and timings in it and needs no other file. A sample that is "
         "refused is shown with the reason. When a whole section fails, the page is written with "
         "the reason in its place, and the exit status is 1.",
         "rba tour out/tour\nrba tour /tmp/mine --samples ~/textures"});
    addArgument(command, "OUTDIR", arguments.folder, "Folder to write to; made when missing");
    addOption(command, "--samples", arguments.samples, "DIR",
              "Folder with the sample files; those that came with the program when not given");
}

}  // namespace rb::cli
