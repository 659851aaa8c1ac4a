#pragma once

#include <utility>

/// A node of a list: its neighbours, and the element.
template <class T> struct TuNodeLinked
{
    template <class... Args>
    explicit TuNodeLinked(Args&&... args)
        : element(std::forward<Args>(args)...)
    {
    }

    TuNodeLinked* next = nullptr;
    TuNodeLinked* previous = nullptr;
    T element;
};
