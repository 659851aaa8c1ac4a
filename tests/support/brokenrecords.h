#pragma once

#include "groundwork/tuexceptions.h"
#include "support/memorystreams.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

/// Cuts a record at every byte and expects of each rest a TuExceptionStream, and `value`, which
/// held something before, to be as it was.
template <class Value>
void ExpectUnchangedByTruncatedRecords(
    const std::vector<unsigned char>& record, Value& value, const Value& before)
{
    for (std::size_t size = 0; size < record.size(); ++size) {
        const std::vector<unsigned char> bytes(
            record.begin(), record.begin() + std::ptrdiff_t(size));
        EXPECT_THROW(
            ReadFromBytes(bytes, [&](auto& stream) { value.Serialize(stream); }), TuExceptionStream)
            << size;
        EXPECT_EQ(value, before) << size;
    }
}
