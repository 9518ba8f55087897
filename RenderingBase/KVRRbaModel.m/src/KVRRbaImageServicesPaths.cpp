// Finding image files, and the texts of paths. Dots, backslashes and semicolons are single bytes
// that occur in no other character of UTF-8, so texts are scanned by bytes.
#include "RenderingBase/host/app/KVRSettingRepository.h"
#include "RenderingBase/host/files/KVRFileSystem.h"
#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "RenderingBase/public/KVRRbaSettings.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace {

constexpr int kFound = 0;
constexpr int kExtensionNotAccepted = -1;
constexpr int kNotFound = -2;

constexpr std::string_view kImageExtensions[] = {"tif", "rgb", "bmp", "jpg", "jpeg", "pic", "psd",
                                                 "png", "tga", "exr", "dds", "hdr",  "svg"};
constexpr std::string_view kEffectExtensions[] = {"fx", "cgfx"};
constexpr std::string_view kEnvironmentMapExtensions[] = {"rgb", "bw", "dds"};
constexpr std::string_view kPhotometryExtensions[] = {"ies", "txt"};

// Where files stand below a directory of KVRStartupPath, first place first.
constexpr const char* kStartupPlaces[] = {
    R"(materials\)",
    R"(materials\shaders\)",
    R"(materials\shaders\textures\)",
    R"(materials\shaders\metaSL\textures\)",
    R"(stickers\)",
};

std::span<const std::string_view> acceptedExtensions(int kind) {
    switch (kind) {
        case 1:
            return kImageExtensions;
        case 2:
            return kEffectExtensions;
        case 3:
            return kEnvironmentMapExtensions;
        case 4:
            return kPhotometryExtensions;
        default:
            return {};
    }
}

bool isAccepted(int kind, const KVRUnicodeString& path) {
    KVRUnicodeString extension = KVRRbaImageServices::ReadExtension(path);
    extension.ToLower();
    const auto accepted = acceptedExtensions(kind);
    return std::find(accepted.begin(), accepted.end(), extension.View()) != accepted.end();
}

bool findInCatalogs(const KVRUnicodeString& fileName, KVRUnicodeString& found) {
    const auto repository = KVRVar<KVRSettingRepository>::Adopt(
        KVRSettingRepository::GetRepository("MaterialOptionsSettings"));
    KVRUnicodeString directories;
    if (!repository || Failed(repository->ReadSetting("CatalagPath", directories))) return false;
    return KVRFindPath(fileName, directories.CastToCharPtr(), found);
}

// Every directory is searched for one place before the next place.
bool findBelowStartupPath(const KVRUnicodeString& fileName, KVRUnicodeString& found) {
    const char* directories = KVRRbaSettings::KVRStartupPath();
    return directories && std::any_of(std::begin(kStartupPlaces), std::end(kStartupPlaces),
                                      [&](const char* place) {
                                          return KVRFindPath(place + fileName, directories, found);
                                      });
}

}  // namespace

int KVRRbaImageServices::FindImageInPaths(int kind, const KVRUnicodeString& path,
                                          KVRUnicodeString& found, KVRBaseUnknown* /*document*/) {
    const KVRUnicodeString realPath = KVRGetRealPath(path);  // first, since path may be found
    found = KVRUnicodeString();
    if (realPath.GetLengthInChar() == 0) return kNotFound;
    if (!isAccepted(kind, realPath)) return kExtensionNotAccepted;
    KVRFileInfo info;
    if (KVRGetFileInfo(realPath, &info) == S_OK) {
        found = realPath;
        return kFound;
    }
    KVRUnicodeString directory, fileName;
    KVRSplitPath(realPath, directory, fileName);
    const bool hit = findInCatalogs(fileName, found) || findBelowStartupPath(fileName, found);
    return hit ? kFound : kNotFound;
}

int KVRRbaImageServices::ExtractPathList(const KVRUnicodeString& text,
                                         KVRListValKVRUnicodeString& list) {
    const std::string copy(text.View());  // the text may stand in the list, which grows
    std::string_view rest = copy;
    for (std::size_t end; (end = rest.find(';')) != std::string_view::npos;) {
        list.Append(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    if (!rest.empty()) list.Append(rest);
    return 0;
}

HRESULT KVRRbaImageServices::SplitPath(const KVRUnicodeString& path, KVRUnicodeString& base,
                                       KVRUnicodeString& extension) {
    const std::string text(path.View());  // a copy, since an output may be the input
    extension = KVRUnicodeString();
    if (text.empty()) return E_FAIL;
    std::size_t cut = text.size();
    for (std::size_t i = text.size(); i-- > 0;) {
        if (text[i] == '.' && extension.GetLengthInChar() == 0) {
            extension = text.substr(i + 1);
            if (i > 0) base = text.substr(0, i);
            cut = i;
        } else if (text[i] == '\\') {
            base = text.substr(i + 1, cut - i - 1);
            break;
        }
    }
    return S_OK;
}

KVRUnicodeString KVRRbaImageServices::ReadExtension(const KVRUnicodeString& path) {
    if (path.GetLengthInChar() < 2) return {};
    const std::string_view text = path.View();
    const std::size_t lastDot = text.rfind('.');
    if (lastDot == std::string_view::npos) return {};
    KVRUnicodeString extension = text.substr(lastDot + 1);
    int version = 0;
    if (lastDot == 0 || !extension.ConvertToNum(version, "%d")) return extension;
    const std::size_t dot = text.rfind('.', lastDot - 1);
    if (dot == std::string_view::npos) return extension;
    return text.substr(dot + 1, lastDot - dot - 1);
}
