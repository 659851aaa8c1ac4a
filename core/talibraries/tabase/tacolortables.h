#pragma once

#include "groundwork/tusmartpointer.h"
#include "tabase/tacolortable.h"

/// Makes tables that are ready for use: their lightness tells what is more and what is less, to
/// every eye, in print, too. A rainbow shows borders where the data has none; use one of these.
///
/// Each has `count` entries over a range, made from control colours that stand evenly spaced, with
/// their source, in tacolortables.cpp; between them red, green and blue go linearly.
///
/// Ownership: the caller's, counted.
/// Threads:   any.
/// Failure:   as the constructor of TaColorTable.
class TABASE_API TaColorTables
{
public:
    TaColorTables() = delete;

    /// From dark violet by way of green to yellow: the usual choice.
    static TuSmartPointer<TaColorTable> CreateViridis(
        unsigned long count = 256, float minimum = 0.0f, float maximum = 1.0f);
    /// From dark blue by way of grey to yellow: looks nearly the same to people who do not see red
    /// and green apart.
    static TuSmartPointer<TaColorTable> CreateCividis(
        unsigned long count = 256, float minimum = 0.0f, float maximum = 1.0f);
    /// Diverging, from blue by way of light grey to red: for values with a centre, which should lie
    /// in the middle of the range.
    static TuSmartPointer<TaColorTable> CreateCoolWarm(
        unsigned long count = 256, float minimum = 0.0f, float maximum = 1.0f);
};
