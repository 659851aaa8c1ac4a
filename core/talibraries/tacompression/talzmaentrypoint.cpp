#include "tacompression/talzmaentrypoint.h"

#include "platform/platformlibrary.h"

#include <stdexcept>
#include <string>

namespace {

constexpr unsigned int kLineNotLoaded = 54;
constexpr unsigned int kLineNoFunction = 61;

std::shared_ptr<const platform::SharedLibrary> loadLibrary(TuSource source)
{
    const auto library = std::make_shared<platform::SharedLibrary>();
    if (!library->Load(u"./VelCompress.dll")) {
        throw TuException(source, kLineNotLoaded,
            std::runtime_error("VelCompress.dll in the current directory cannot be loaded"));
    }
    return library;
}

} // namespace

TaLZMAEntryPoint::TaLZMAEntryPoint(unsigned int ordinal, TuSource source)
    : m_library(loadLibrary(source))
    , m_function(reinterpret_cast<TaLZMAFunction*>(m_library->FindFunction(ordinal)))
{
    if (m_function == nullptr) {
        throw TuException(source, kLineNoFunction,
            std::runtime_error("VelCompress.dll lacks function " + std::to_string(ordinal)));
    }
}

int TaLZMAEntryPoint::operator()(const unsigned char* source, std::uint32_t sourceLength,
    unsigned char* buffer, std::uint32_t& size) const
{
    // The library may move its pointers, but not ours.
    return m_function(&source, &buffer, sourceLength, &size, 0);
}
