#pragma once

#include "platform/platformapi.h"

#include <string_view>

namespace platform {

/// A shared library loaded at run time.
///
/// Ownership: the library stays loaded until the object is destroyed or closed; movable only.
/// Failure:   false or null.
class PLATFORM_API SharedLibrary
{
public:
    SharedLibrary() = default;
    ~SharedLibrary();
    SharedLibrary(SharedLibrary&& other) noexcept;
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;

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
