#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

/// Moves each element of a short range to its place among those before it.
template <class T, class Less> void TuArrayInsertionSort(T* first, T* last, Less& less)
{
    for (T* unsorted = first; unsorted != last; ++unsorted) {
        T* place = unsorted;
        while (place != first && less(*unsorted, place[-1])) {
            --place;
        }
        if (place != unsorted) {
            T element(std::move(*unsorted));
            std::move_backward(place, unsorted, unsorted + 1);
            *place = std::move(element);
        }
    }
}

/// Splits the range around the median of its first, middle and last element; returns where that
/// element ends up. Both scans stop at the ends of the range, whatever the comparison answers.
template <class T, class Less> T* TuArrayPartition(T* first, T* last, Less& less)
{
    T* const middle = first + (last - first) / 2;
    T* const back = last - 1;
    if (less(*middle, *first)) {
        std::iter_swap(middle, first);
    }
    if (less(*back, *middle)) {
        std::iter_swap(back, middle);
        if (less(*middle, *first)) {
            std::iter_swap(middle, first);
        }
    }
    std::iter_swap(first, middle); // the median waits at the front
    T* left = first + 1;
    T* right = back;
    for (;;) {
        while (left <= right && less(*left, *first)) {
            ++left;
        }
        while (left <= right && less(*first, *right)) {
            --right;
        }
        if (left >= right) {
            break;
        }
        std::iter_swap(left++, right--);
    }
    std::iter_swap(first, right);
    return right;
}

/// Lets the element at `root` sink in the heap of the first `count` elements.
template <class T, class Less>
void TuArraySink(T* first, std::size_t root, std::size_t count, Less& less)
{
    for (std::size_t child = 2 * root + 1; child < count; child = 2 * root + 1) {
        if (child + 1 < count && less(first[child], first[child + 1])) {
            ++child;
        }
        if (!less(first[root], first[child])) {
            return;
        }
        std::iter_swap(first + root, first + child);
        root = child;
    }
}

template <class T, class Less> void TuArrayHeapSort(T* first, T* last, Less& less)
{
    auto count = static_cast<std::size_t>(last - first);
    for (std::size_t root = count / 2; root-- > 0;) {
        TuArraySink(first, root, count, less);
    }
    while (count > 1) {
        std::iter_swap(first, first + --count);
        TuArraySink(first, 0, count, less);
    }
}

template <class T, class Less>
void TuArrayQuickSort(T* first, T* last, Less& less, unsigned int depth)
{
    constexpr std::ptrdiff_t kShort = 16;
    while (last - first > kShort) {
        if (depth-- == 0) {
            TuArrayHeapSort(first, last, less);
            return;
        }
        T* const pivot = TuArrayPartition(first, last, less);
        // The recursion takes the shorter part: it stays shallow.
        if (pivot - first < last - pivot) {
            TuArrayQuickSort(first, pivot, less, depth);
            first = pivot + 1;
        } else {
            TuArrayQuickSort(pivot + 1, last, less, depth);
            last = pivot;
        }
    }
    TuArrayInsertionSort(first, last, less);
}

/// Sorts a range by quicksort; a range that splits badly too often is left to heap sort, so that
/// the cost is n log n for every input. A comparison that is no order (NaN, say) gives an
/// unspecified order of the same elements; one that throws leaves all elements in the range.
template <class T, class Less> void TuArraySort(T* first, T* last, Less& less)
{
    const auto count = static_cast<std::size_t>(last - first);
    TuArrayQuickSort(first, last, less, 2 * static_cast<unsigned int>(std::bit_width(count)));
}
