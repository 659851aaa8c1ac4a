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

/// The usual stored form, as the policies of lists and sets have it.
struct TuElementPolicySerializable
{
    static constexpr unsigned int kVersion = 0;

    template <class T> static void Write(TuStreamWriteBinary& stream, const T& element)
    {
        TuWriteElement(stream, element);
    }
    template <class T> static void Read(TuStreamReadBinary& stream, T& element)
    {
        TuReadElement(stream, element);
    }
};
