#pragma once

/// @file  The settings of the user, in named repositories that outlive the process.
///
///     auto options = KVRVar<KVRSettingRepository>::Adopt(
///         KVRSettingRepository::GetRepository("RenderingOptionsSettings"));
///     int choice = 0;
///     if (options && Succeeded(options->ReadSetting("ProfileCombo", choice))) ...

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/modeler/KVRClass.h"

#include <string>
#include <utility>
#include <vector>

/// A repository: settings by name, each a text.
///
/// Every repository is a key file, `<name>.ini`, in the folder `RenderingBase` of the user's
/// configuration folder ($XDG_CONFIG_HOME, else ~/.config), which is looked up at each call that
/// takes a repository's name. Each read sees the file as it is at that moment; each write replaces
/// the whole file in one step and keeps what else is in it, also when several processes write at
/// once. A damaged file is never written: it fails to read and to write until somebody mends or
/// removes it. Reasons for failures go to the host trace "KVRSettingRepository".
///
/// Names of repositories and settings are ASCII letters, digits, "_", "-" and "."; a repository's
/// does not start with ".".
/// Threads: all members may be called at once.
/// Cost: each call reads the file; a write waits until the disk has it.
class KVR_EXPORT KVRSettingRepository : public KVRClass<"KVRSettingRepository"> {
public:
    /// A setting's name and value.
    using Setting = std::pair<KVRUnicodeString, KVRUnicodeString>;

    /// Returns a repository with one reference for the caller; null when it was never created or @p
    /// name cannot be one's. Creates nothing.
    static KVRSettingRepository* GetRepository(const char* name);

    /// The same, but creates the repository when it is not there; null when that fails.
    static KVRSettingRepository* CreateRepository(const char* name);

    /// Returns the names of all repositories, sorted.
    static std::vector<KVRUnicodeString> ListRepositories();

    /// Reads a setting.
    /// Errors: E_FAIL when it was never written, is no decimal number (the second form), or the
    ///         file is gone or damaged; E_INVALIDARG when @p name is null. The value is untouched
    ///         then.
    HRESULT ReadSetting(const char* name, KVRUnicodeString& value) const;
    HRESULT ReadSetting(const char* name, int& value) const;

    /// Writes a setting; any text comes back as it was.
    /// Errors: E_INVALIDARG when @p name cannot be a setting's; E_FAIL when the repository is gone,
    ///         damaged or cannot be written. The file is as before then.
    HRESULT WriteSetting(const char* name, const KVRUnicodeString& value);
    HRESULT WriteSetting(const char* name, int value);

    /// Reads all settings, in the order of the file.
    /// @param settings  replaced; empty on failure.
    /// Errors: E_FAIL when the file is gone or damaged.
    HRESULT ListSettings(std::vector<Setting>& settings) const;

    /// The path of the file.
    KVRUnicodeString GetFilePath() const;

private:
    explicit KVRSettingRepository(std::string file) : m_file(std::move(file)) {}

    const std::string m_file;  // in the form of the system
};
