#pragma once

#include "platform/platformapi.h"

#include <string_view>
#include <utility>

namespace platform {

/// A shared library loaded at run time.
///
/// Ownership: the library stays loaded until the object is destroyed or closed; movable only.
/// Failure:   false or null.
class PLATFORM_API SharedLibrary
{
public:
    SharedLibrary() = default;
    ~SharedLibrary() { Unload(); }
    SharedLibrary(SharedLibrary&& other) noexcept
        : m_handle(std::exchange(other.m_handle, nullptr))
    {
    }
    SharedLibrary& operator=(SharedLibrary&& other) noexcept
    {
        if (this != &other) {
            Unload();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }

    /// A path with a separator in it names that file and no other, from the current directory where
    /// it is relative; a bare name is looked for where the system keeps its libraries.
    [[nodiscard]] bool Load(std::u16string_view path);
    void Unload();
    bool IsLoaded() const { return m_handle != nullptr; }

    void* FindFunction(const char* name) const;
    /// Function number `ordinal`: on Windows the export of that number, elsewhere the symbol
    /// `ordinal_N`.
    void* FindFunction(unsigned int ordinal) const;

private:
    void* m_handle = nullptr;
};

} // namespace platform
