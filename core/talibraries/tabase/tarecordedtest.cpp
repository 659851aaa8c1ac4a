#include "tabase/tarecordedtest.h"

#include "platform/platformarguments.h"
#include "platform/platformterminal.h"
#include "tabase/taalgorithm.h"
#include "tabase/tastreamreadbinaryfile.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

void say(const std::string& text) { platform::WriteStandard(platform::eSS_Error, text + "\n"); }

TuSmartPointer<TaAlgorithm> makeAlgorithm(const CString& className)
{
    const TuRTTI::CreateFunction create = TuRTTI::getCreate(className);
    std::unique_ptr<IObject> object(create != nullptr ? create() : nullptr);
    auto* const algorithm = dynamic_cast<TaAlgorithm*>(object.get());
    if (algorithm == nullptr) {
        throw TuException(TU_HERE,
            std::runtime_error("there is no algorithm " + className.ToUtf8()
                + " that is made by its name; is its library linked?"));
    }
    static_cast<void>(object.release());
    return algorithm;
}

/// The failure of a run, where it is known.
std::string describe(TaUnitTest::EResult result, const TaAlgorithm& algorithm)
{
    if (result == TaUnitTest::eR_Different) {
        return "the result is not the recorded one";
    }
    const TuSmartPointer<const TuException> failure = algorithm.GetException();
    return "the run failed"
        + (failure.IsNull() ? std::string() : std::string(": ") + failure->what());
}

TaUnitTest::EResult replay(TaAlgorithm& algorithm, const CString& path)
{
    TaStreamReadBinaryFile file(path);
    algorithm.Serialize(file);
    return algorithm.RunUnitTest();
}

} // namespace

TaUnitTest::EResult TaRecordedTest::Run(const CString& className, const CString& path)
{
    return replay(*makeAlgorithm(className), path);
}

int TaRecordedTest::Main(int argumentCount, const char* const* arguments)
{
    constexpr int kNotRun = 1;
    try {
        const std::vector<std::string> words = platform::GetArguments(argumentCount, arguments);
        if (words.size() != 2) {
            say("usage: ALGORITHM RECORDING");
            return kNotRun;
        }
        const TuSmartPointer<TaAlgorithm> algorithm = makeAlgorithm(CString::FromUtf8(words[0]));
        const TaUnitTest::EResult result = replay(*algorithm, CString::FromUtf8(words[1]));
        if (result == TaUnitTest::eR_Passed) {
            return 0;
        }
        say(words[1] + ": " + describe(result, *algorithm));
        return result;
    } catch (const std::exception& failure) {
        say(failure.what());
        return kNotRun;
    }
}
