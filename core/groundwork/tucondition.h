#pragma once

#include "groundwork/tuexceptions.h"

#include <utility>

/// How often the condition objects look: 0 never, 1 in debug builds, 2 (the usual one) always.
template <int Level> constexpr bool TuIsConditionChecked()
{
#if defined(NDEBUG)
    return Level >= 2;
#else
    return Level >= 1;
#endif
}

/// Checks, where it is constructed, what a function demands of its caller.
///
/// Description and file are wide text, or what becomes it; they are made into text only when the
/// condition fails, so that a check that holds costs the predicate alone.
///
///     TuPreCondition<2>(u"the index lies in the array", TU_HERE, [&] { return i < size; });
///
/// Failure: TuExceptionPreconditionViolation with the given place and description when the
///          predicate answers false. What the predicate throws passes unchanged.
template <int Level> class TuPreCondition
{
public:
    template <class Text, class Source, class Predicate>
    TuPreCondition(
        const Text& description, const Source& file, unsigned int line, Predicate&& predicate)
    {
        if (TuIsConditionChecked<Level>() && !std::forward<Predicate>(predicate)()) {
            throw TuExceptionPreconditionViolation(file, line, description);
        }
    }
};

/// Checks what a function promises. It looks where it is constructed: put it at the end of the
/// function, behind the work (a destructor could not throw).
///
/// Failure: TuExceptionPostconditionViolation, otherwise as TuPreCondition.
template <int Level> class TuPostCondition
{
public:
    template <class Text, class Source, class Predicate>
    TuPostCondition(
        const Text& description, const Source& file, unsigned int line, Predicate&& predicate)
    {
        if (TuIsConditionChecked<Level>() && !std::forward<Predicate>(predicate)()) {
            throw TuExceptionPostconditionViolation(file, line, description);
        }
    }
};
