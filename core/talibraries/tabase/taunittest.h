#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iextendable.h"
#include "groundwork/iobject.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tabaseapi.h"

class TuStreamReadBinary;
class TuStreamWriteBinary;

/// What can be tested by running it again: it reads an input and the output that belongs to it,
/// both recorded earlier, runs, and compares.
///
/// Ownership: as TuReferenceCounted.
/// Threads:   one at a time.
class TABASE_API TaUnitTest : public virtual IObject, public IExtendable, public TuReferenceCounted
{
    TU_DECLARE_RTTI

public:
    /// Stored in reports: the numbers are fixed.
    enum EResult
    {
        eR_Passed = 1,
        eR_Failed = 2, // it did not run to its end
        eR_Different = 4, // it did, and its result is not the recorded one
    };

    TaUnitTest() = default;
    TaUnitTest(const TaUnitTest&) = default;
    TaUnitTest& operator=(const TaUnitTest&) = default;
    ~TaUnitTest() override = default;

    /// Runs one of GetSubtestCount() tests. TuExceptionPreconditionViolation where there is none of
    /// that number.
    EResult RunUnitTest(unsigned int subtest = 0);
    unsigned int GetSubtestCount() { return getSubtestCount(); }
    CString GetSubtestName(unsigned int subtest) { return getSubtestName(subtest); }

    void SerializeUnitTestInput(TuStreamWriteBinary& stream) const;
    void SerializeUnitTestInput(TuStreamReadBinary& stream);
    void SerializeUnitTestOutput(TuStreamWriteBinary& stream) const;
    void SerializeUnitTestOutput(TuStreamReadBinary& stream);
    void ReleaseUnitTestInput() { releaseUnitTestInput(); }
    void ReleaseUnitTestOutput() { releaseUnitTestOutput(); }

    TU_DECLARE_EXTENSIONS;

protected:
    /// RunUnitTest has been called.
    virtual void prepareUnitTest() { }
    virtual EResult runUnitTest(unsigned int subtest) = 0;
    virtual unsigned int getSubtestCount() { return 1; }
    virtual CString getSubtestName(unsigned int subtest);
    /// What the test needs, and what it has to come to. Output that is read is kept beside that of
    /// the object itself, to be compared with it.
    virtual void serializeUnitTestInput(TuStreamWriteBinary& stream) const = 0;
    virtual void serializeUnitTestInput(TuStreamReadBinary& stream) = 0;
    virtual void serializeUnitTestOutput(TuStreamWriteBinary& stream) const = 0;
    virtual void serializeUnitTestOutput(TuStreamReadBinary& stream) = 0;
    /// Lets go of what was read.
    virtual void releaseUnitTestInput() { }
    virtual void releaseUnitTestOutput() { }
};
