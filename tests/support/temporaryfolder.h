#pragma once

#include "groundwork/cstring.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

/// All bytes of a file, none if there is no such file.
std::string ReadFile(const std::filesystem::path& path);

/// A new folder for the files of one test, removed with all that is in it at the end.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// `name` is UTF-8.
    std::filesystem::path GetPath(std::string_view name) const
    {
        return m_folder / std::u8string(name.begin(), name.end());
    }
    /// The path as the library takes it.
    CString operator/(std::string_view name) const { return CString(GetPath(name).u16string()); }

    std::string ReadAll(std::string_view name) const { return ReadFile(GetPath(name)); }
    void WriteAll(std::string_view name, std::string_view content) const;
    /// Folders count too.
    std::ptrdiff_t CountFiles() const;

private:
    std::filesystem::path m_folder;
};
