#include "tests/cli/RunRba.h"

#include <algorithm>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rb::test {
namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Adds "NAME=value" unless there is a value of that name.
void addDefault(std::vector<std::string>& variables, const std::string& addition) {
    const std::string name = addition.substr(0, addition.find('=') + 1);
    if (std::ranges::none_of(variables,
                             [&](const std::string& text) { return text.starts_with(name); }))
        variables.push_back(addition);
}

std::vector<std::string> environmentWith(std::vector<std::string> variables) {
    for (char** variable = environ; *variable; ++variable) addDefault(variables, *variable);
    return variables;
}

}  // namespace

int startRba(const Arguments& arguments, const RbaSettings& settings, const std::string& outFile,
             const std::string& errFile) {
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), RB_PROGRAM);
    std::vector<std::string> variables = environmentWith(settings.environment);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (!settings.folder.empty())
        posix_spawn_file_actions_addchdir_np(&actions, settings.folder.c_str());
    pid_t process = 0;
    const int error = posix_spawn(&process, RB_PROGRAM, &actions, nullptr, pointersTo(words).data(),
                                  pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error(std::string("cannot start ") + RB_PROGRAM);
    return process;
}

bool isRunning(int process) {
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT);
    return ended.si_pid == 0;
}

int waitForRba(int process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

RbaResult runRba(const Arguments& arguments, const RbaSettings& settings) {
    const TempFolder folder;
    const std::string out = settings.out.empty() ? folder.file("out") : settings.out;
    const std::string err = folder.file("err");
    RbaResult result;
    RbaSettings apart = settings;
    const std::string empty = folder.file("empty");
    std::filesystem::create_directory(empty);
    addDefault(apart.environment, "XDG_CONFIG_HOME=" + empty);
    addDefault(apart.environment, "KVRStartupPath=" + empty);
    result.status = waitForRba(startRba(arguments, apart, out, err));
    if (settings.out.empty()) result.out = readFile(out);
    result.err = readFile(err);
    return result;
}

Json RbaResult::json() const {
    Json value = Json::parse(out, nullptr, false);
    EXPECT_FALSE(value.is_discarded()) << "not JSON: " << out;
    return value;
}

std::string readFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> keysOf(const Json& object) {
    std::vector<std::string> keys;
    for (const auto& item : object.items()) keys.push_back(item.key());
    return keys;
}

std::string writePicture(const TempFolder& folder, const std::string& name, int width, int height,
                         KVRPixelImageFormat format, double dpi) {
    const auto image = KVRVar<KVRPixelImage>::Adopt(new KVRPixelImage(width, height, format));
    const auto bytes = image->GetRawPixels();
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(i * 37 % 251);
    if (dpi > 0) image->SetResolution(dpi, dpi, rb::imaging::kPerInch);
    const std::string path = folder.write(name);
    if (Failed(image->WriteToFile(path, "PNG"))) throw std::runtime_error("cannot write " + path);
    return path;
}

std::string radianceFile(int width, int height) {
    std::string file = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(height) +
                       " +X " + std::to_string(width) + "\n";
    for (int i = 0; i < width * height; ++i) file += {'\x10', '\x20', '\x40', '\x83'};
    return file;
}

testing::AssertionResult isErrorLine(const std::string& text, const std::string& file) {
    const std::string prefix = "rba: " + file + ": ";
    const auto expected = text.find("expected "), found = text.find(", found ");
    if (text.starts_with(prefix) && expected != std::string::npos && found != std::string::npos &&
        expected < found && std::ranges::count(text, '\n') == 1 && text.ends_with('\n'))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "not one error line about " << file << ": " << text;
}

}  // namespace rb::test
