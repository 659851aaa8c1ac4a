#pragma once

#include "groundwork/cstring.h"

#include <filesystem>
#include <string>
#include <string_view>

/// A new folder for the files of one test, removed with all that is in it at the end.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path GetPath(std::string_view name) const { return m_folder / name; }
    /// The path as the library takes it.
    CString operator/(std::string_view name) const { return CString(GetPath(name).u16string()); }

    std::string ReadAll(std::string_view name) const;
    void WriteAll(std::string_view name, std::string_view content) const;

private:
    std::filesystem::path m_folder;
};
