#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

/// How the containers write and read one element: by its own Serialize where it has one (nested
/// containers do), else by the stream's operators.

template <class T>
concept TuHasSerialize
    = requires(const T& constant, T& value, TuStreamWriteBinary& writer, TuStreamReadBinary& reader)
{
    constant.Serialize(writer);
    value.Serialize(reader);
};

template <class T> void TuWriteElement(TuStreamWriteBinary& stream, const T& element)
{
    if constexpr (TuHasSerialize<T>) {
        element.Serialize(stream);
    } else {
        stream << element;
    }
}

template <class T> void TuReadElement(TuStreamReadBinary& stream, T& element)
{
    if constexpr (TuHasSerialize<T>) {
        element.Serialize(stream);
    } else {
        stream >> element;
    }
}
