#pragma once

#include "support/allocationlimit.h"
#include "support/brokenrecords.h"
#include "support/fragile.h"

#include <algorithm>

/// Lets each copy of a Fragile that `change` makes fail in turn.
template <class Container, class Change>
void ExpectUnchangedByFailedCopies(const Container& original, Change&& change)
{
    for (int copies = 1, hasFailed = 1; hasFailed != 0; ++copies) {
        Container container(original);
        Fragile::s_copiesUntilFailure = copies;
        try {
            change(container);
            hasFailed = 0;
        } catch (const std::runtime_error&) {
            EXPECT_EQ(container, original);
        }
        Fragile::s_copiesUntilFailure = 0;
    }
}

/// Lets each allocation of `change` fail in turn, of which there is at least one. `line`, where
/// given, is the one that the contract states.
template <class Container, class Change>
void ExpectUnchangedWithoutMemory(const Container& original, Change&& change, unsigned int line = 0)
{
    const unsigned int failures = FailEachAllocation([&](unsigned int allowed) {
        Container container(original);
        const AllocationLimit limit(allowed);
        try {
            change(container);
            return true;
        } catch (const TuExceptionOutOfMemory& failure) {
            EXPECT_TRUE(line == 0 || failure.GetLine() == line) << failure.what();
            EXPECT_EQ(container, original);
            return false;
        }
    });
    EXPECT_GT(failures, 0u);
}

/// Gives `container` the record of `source` cut short, of a later version, with a count beyond all
/// memory, and `broken`; expects it to refuse each and stay as it was, and then to read the record.
template <class Container>
void ExpectToReadOnlyWholeRecords(const Container& source, Container container,
    const std::vector<unsigned char>& record, const std::vector<unsigned char>& broken = {})
{
    const auto write = [](const Container& written) {
        return WriteToBytes([&](auto& stream) { written.Serialize(stream); });
    };
    const auto read = [&](auto& stream) { container.Serialize(stream); };
    EXPECT_EQ(write(source), record);

    const Container before(container);
    ExpectUnchangedByTruncatedRecords(record, container, before);
    auto newer = record;
    newer[0] = 1;
    auto huge = record;
    std::fill_n(huge.begin() + 4, 4, static_cast<unsigned char>(0xFF));
    {
        const AllocationLimit limit(100);
        EXPECT_THROW(ReadFromBytes(newer, read), TuExceptionWrongFileVersion);
        EXPECT_THROW(ReadFromBytes(huge, read), TuExceptionStream);
        EXPECT_THROW(ReadFromBytes(broken, read), TuExceptionStream);
        EXPECT_LT(limit.GetLargest(), 1000u);
    }
    EXPECT_EQ(container, before);
    EXPECT_TRUE(ReadFromBytes(record, read));
    EXPECT_EQ(container, source);
    EXPECT_EQ(write(container), record);
}
