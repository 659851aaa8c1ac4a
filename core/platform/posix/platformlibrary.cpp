#include "platform/platformlibrary.h"

#include "platform/platformtext.h"

#include <dlfcn.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace platform {

bool SharedLibrary::Load(std::u16string_view path)
{
    Unload();
    std::string native = ToUtf8(path);
    if (native.find('/') != std::string::npos) {
        // The loader knows what it has loaded by the name that it was given: a relative one would
        // stand for the same file after a change of the current directory.
        std::error_code failure;
        native = std::filesystem::absolute(native, failure).string();
        if (failure) {
            return false;
        }
    }
    m_handle = dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL);
    return IsLoaded();
}

void SharedLibrary::Unload()
{
    if (IsLoaded()) {
        dlclose(std::exchange(m_handle, nullptr));
    }
}

void* SharedLibrary::FindFunction(const char* name) const
{
    return IsLoaded() ? dlsym(m_handle, name) : nullptr;
}

void* SharedLibrary::FindFunction(unsigned int ordinal) const
{
    return FindFunction(("ordinal_" + std::to_string(ordinal)).c_str());
}

} // namespace platform
