#pragma once

#include "platform/platformapi.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

enum EFileMode
{
    eFM_Read, // must exist
    eFM_Write, // created, or cut to length 0
    eFM_CreateNew, // must not exist yet
};

/// An open file: unbuffered reading and writing at one position. Paths are UTF-16.
///
/// A path longer than 260 units and a file that others have open are no obstacle on any system, but
/// a program that opens a file on Windows by other means may keep others out.
///
/// Ownership: the handle is closed by the destructor; movable, not copyable.
/// Threads:   one thread at a time.
/// Failure:   false, or a count below the one asked for; GetLastSystemError() has the reason.
class PLATFORM_API File
{
public:
    File() = default;
    ~File() { Close(); }
    File(File&& other) noexcept
        : m_handle(std::exchange(other.m_handle, kNoHandle))
    {
    }
    File& operator=(File&& other) noexcept
    {
        if (this != &other) {
            Close();
            m_handle = std::exchange(other.m_handle, kNoHandle);
        }
        return *this;
    }

    [[nodiscard]] bool Open(std::u16string_view path, EFileMode mode);
    /// Creates `path` to take the place of `target` later: until then nobody may read it who may
    /// not read `target`, where that exists and may be replaced. `taken` receives whether it failed
    /// because there is such a path already.
    [[nodiscard]] bool CreateFor(std::u16string_view path, std::u16string_view target, bool& taken);
    bool IsOpen() const { return m_handle != kNoHandle; }

    /// Reads up to `size` bytes into `data`. `count` receives fewer only at the end of the file.
    [[nodiscard]] bool Read(void* data, std::size_t size, std::size_t& count);
    /// Writes all bytes; on false, some may have been written.
    [[nodiscard]] bool Write(const void* data, std::size_t size);
    /// The size in bytes; false for what has none (a pipe, a terminal).
    [[nodiscard]] bool GetSize(std::uint64_t& size) const;
    [[nodiscard]] bool SetPosition(std::uint64_t position);
    /// Returns when the bytes written so far have reached the storage device.
    [[nodiscard]] bool Sync();
    /// Closes; false when the system reports only now that bytes were lost.
    bool Close();

private:
    static constexpr std::intptr_t kNoHandle = -1;

    std::intptr_t m_handle = kNoHandle;
};

/// Whether a file could take the place of this path: there is nothing yet, or an ordinary file that
/// may be written. A device or a folder is no document; a protected file is protected on purpose.
[[nodiscard]] PLATFORM_API bool MayBeReplaced(std::u16string_view path);

enum EReplaceResult
{
    eRR_Failed, // nothing has changed
    eRR_Replaced, // done, but a crash of the system may still undo it
    eRR_Durable,
};

/// Puts the file `from` in the place of `to` in one step, so that a reader, or a crash, finds the
/// old or the new file, never a part; then makes that step durable. (A folder that cannot be read
/// cannot be synced; that is not counted as a failure.)
/// Both in the same folder. `to` may be replaced (see MayBeReplaced); the new file takes the mode
/// of the old one, on Windows its list of rights and its attributes. While a program holds the old
/// file open, Windows may refuse; then nothing has changed.
[[nodiscard]] PLATFORM_API EReplaceResult ReplaceAtomically(
    std::u16string_view from, std::u16string_view to);

/// Finds the path behind symbolic links: `path` itself where it is none, or does not exist. False
/// where there is one that cannot be followed, or has no UTF-16 form.
[[nodiscard]] PLATFORM_API bool ResolveLinks(std::u16string_view path, std::u16string& target);

PLATFORM_API bool RemovePath(std::u16string_view path);
PLATFORM_API bool PathExists(std::u16string_view path);
[[nodiscard]] PLATFORM_API bool MakeFolder(std::u16string_view path);

/// The names in a folder, sorted by code unit, without "." and "..".
[[nodiscard]] PLATFORM_API bool ListFolder(
    std::u16string_view path, std::vector<std::u16string>& names);

} // namespace platform
