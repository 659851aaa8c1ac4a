#include "tabase/taunittest.h"

#include "groundwork/tucondition.h"

TU_DEFINE_RTTI_ROOT(TaUnitTest, nullptr, nullptr);

TaUnitTest::EResult TaUnitTest::RunUnitTest(unsigned int subtest)
{
    TuPreCondition<2>(
        u"there is a subtest of this number", TU_HERE, [&] { return subtest < getSubtestCount(); });
    prepareUnitTest();
    return runUnitTest(subtest);
}

void TaUnitTest::SerializeUnitTestInput(TuStreamWriteBinary& stream) const
{
    serializeUnitTestInput(stream);
}

void TaUnitTest::SerializeUnitTestInput(TuStreamReadBinary& stream)
{
    serializeUnitTestInput(stream);
}

void TaUnitTest::SerializeUnitTestOutput(TuStreamWriteBinary& stream) const
{
    serializeUnitTestOutput(stream);
}

void TaUnitTest::SerializeUnitTestOutput(TuStreamReadBinary& stream)
{
    serializeUnitTestOutput(stream);
}

const IExtensionInterface* TaUnitTest::GetExtension(
    [[maybe_unused]] const char* name, bool mustExist) const
{
    if (mustExist) {
        throw TuExceptionUnknownExtension(TU_HERE);
    }
    return nullptr;
}

IExtensionInterface* TaUnitTest::GetExtension(const char* name, bool mustExist)
{
    return const_cast<IExtensionInterface*>(
        static_cast<const TaUnitTest*>(this)->GetExtension(name, mustExist));
}

CString TaUnitTest::getSubtestName([[maybe_unused]] unsigned int subtest) { return GetClassName(); }
