#include "groundwork/tuexceptions.h"
#include "support/eagersource.h"
#include "tabase/tastreamreadasciistring.h"

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <span>
#include <string_view>

namespace {

/// Reads one value; returns whether the end was reached.
template <class Target> bool extract(TaStreamReadASCII& stream)
{
    const bool atEnd = stream.IsEndOfStream();
    Target value{};
    try {
        stream >> value;
    } catch (const TuExceptionStream&) {
        return stream.IsEndOfStream();
    }
    if (atEnd) {
        std::abort(); // nothing may come after the end
    }
    return stream.IsEndOfStream();
}

using Extraction = bool (*)(TaStreamReadASCII&);

constexpr Extraction kExtractions[]
    = { extract<CStringA>, extract<CString>, extract<float>, extract<double>, extract<bool>,
          extract<signed char>, extract<unsigned char>, extract<short>, extract<unsigned short>,
          extract<int>, extract<unsigned int>, extract<long long>, extract<unsigned long long> };

/// Each extraction takes at least one byte, or the end.
void extractAll(TaStreamReadASCII& stream, std::span<const std::uint8_t> kinds, std::size_t most)
{
    for (std::size_t step = 0;; ++step) {
        const std::uint8_t kind = kinds[step % kinds.size()];
        if (kExtractions[kind % std::size(kExtractions)](stream)) {
            break;
        }
        if (step > most) {
            std::abort(); // it stands still
        }
    }
    for (const Extraction extraction : kExtractions) {
        extraction(stream);
    }
}

} // namespace

/// The first byte says how many of the next ones choose what is read, in turn; the rest is the
/// text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kLargest = 1024; // several work buffers of a line; more takes only time
    if (size < 2 || size > kLargest) {
        return 0;
    }
    const std::size_t count = 1 + data[0] % (size - 1);
    const std::span<const std::uint8_t> kinds(data + 1, count);
    const std::string_view text(reinterpret_cast<const char*>(data) + 1 + count, size - 1 - count);
    const CStringA content(text);
    TaStreamReadASCIIString stream(content);
    extractAll(stream, kinds, text.size());
    EagerSource eager(text);
    extractAll(eager, kinds, text.size());
    return 0;
}
