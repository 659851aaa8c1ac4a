#pragma once

#include "groundwork/tuarraypolicy.h"
#include "groundwork/tuarraysort.h"
#include "groundwork/tuassert.h"
#include "groundwork/tucontainer.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tumemory.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

/// A growable array in one block: the usual collection for values that are reached by index.
///
/// When the block is full it grows by growBy elements, or to twice its size where growBy is 0 (the
/// default). Iterators are pointers; growing, inserting and removing make those behind the place
/// (after growing: all) invalid. An element of the array itself may be added to it.
///
///     TuArray<int> primes{ 2, 3, 5 };
///     primes.Add(7);
///     for (int prime : primes)
///         Use(prime);
///
/// Ownership: of its elements.
/// Threads:   many readers, or one writer.
/// Failure:   TuExceptionOutOfMemory when the block cannot grow; the array is then as it was. The
///            same holds when an added element cannot be copied; where an element cannot be moved
///            out of the way of an inserted one, the array stays sound, but not as it was. A place
///            outside the array is a TuExceptionPreconditionViolation, except at operator[], which
///            looks in debug builds only.
template <class T, class ConstructPolicy = TuArrayPolicyConstructDefault>
class TuArray : public TuContainer<T>
{
public:
    using value_type = T;
    using size_type = unsigned int;
    using difference_type = std::ptrdiff_t;
    using reference = T&;
    using const_reference = const T&;
    using iterator = T*;
    using const_iterator = const T*;

    /// What Find answers when nothing is found.
    static constexpr unsigned int kNotFound = 0xFFFFFFFFu;

    TuArray() = default;
    // By way of the empty array: when an element cannot be copied, the block goes with it.
    TuArray(std::initializer_list<T> elements)
        : TuArray(elements.begin(), elements.end())
    {
    }
    template <std::forward_iterator Iterator>
    TuArray(Iterator first, Iterator last)
        : TuArray()
    {
        AddRange(first, last);
    }
    TuArray(const TuArray& other);
    TuArray(TuArray&& other) noexcept
        : m_growBy(other.m_growBy)
    {
        swapBlocks(other);
    }
    /// Takes growBy over, too.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): it looks, or swaps
    TuArray& operator=(const TuArray& other);
    TuArray& operator=(TuArray&& other) noexcept;
    ~TuArray() override;

    /// Appends; returns whether the block had to grow.
    bool Add(const T& element);
    bool Add(T&& element);
    /// Appends an element made from `args`, and returns it.
    template <class... Args> T& Emplace(Args&&... args);
    /// The range lies outside this array.
    template <std::forward_iterator Iterator> void AddRange(Iterator first, Iterator last);
    void Append(const TuArray& other);
    void push_back(const T& element) { Add(element); }
    void push_back(T&& element) { Add(std::move(element)); }

    /// Inserts before the element at `index`, or at the end where `index` is the size.
    void InsertAt(unsigned int index, const T& element);
    void InsertAt(unsigned int index, T&& element);
    void RemoveAt(unsigned int index, unsigned int count = 1);
    /// Removes one element; returns the place of the one that followed it.
    iterator Erase(const_iterator position);
    void RemoveLast() { RemoveAt(m_size - 1); }
    /// Keeps the block; FreeExtra gives it back.
    void RemoveAll();

    /// Cuts the array, or fills it up with elements that the policy makes.
    void SetSize(unsigned int size);
    void Reserve(unsigned int capacity);
    /// Shrinks the block to the elements in use.
    void FreeExtra();
    /// By how many elements the block grows; 0 doubles it.
    void SetGrowBy(unsigned int growBy) { m_growBy = growBy; }

    T& operator[](unsigned int index)
    {
        TU_ASSERT(index < m_size, "an index lies behind the end of its array");
        return m_elements[index];
    }
    const T& operator[](unsigned int index) const
    {
        TU_ASSERT(index < m_size, "an index lies behind the end of its array");
        return m_elements[index];
    }
    T& GetAt(unsigned int index) { return m_elements[checkedIndex(index)]; }
    const T& GetAt(unsigned int index) const { return m_elements[checkedIndex(index)]; }
    void SetAt(unsigned int index, const T& element) { GetAt(index) = element; }
    void SetAt(unsigned int index, T&& element) { GetAt(index) = std::move(element); }
    T& GetFirst() { return GetAt(0); }
    const T& GetFirst() const { return GetAt(0); }
    T& GetLast() { return GetAt(m_size - 1); }
    const T& GetLast() const { return GetAt(m_size - 1); }

    unsigned int GetSize() const { return m_size; }
    bool IsEmpty() const { return m_size == 0; }
    unsigned int GetCapacity() const { return m_capacity; }
    unsigned int GetGrowBy() const { return m_growBy; }
    /// All elements, one behind the other; null while there is no block.
    T* GetData() { return m_elements; }
    const T* GetData() const { return m_elements; }

    /// The index of the first equal element from `start` on, or kNotFound.
    template <class Value> unsigned int Find(const Value& value, unsigned int start = 0) const;
    template <class Value> bool Contains(const Value& value) const
    {
        return Find(value) != kNotFound;
    }

    /// Not stable: use a TuListSorted, or std::stable_sort, to keep the order of equal elements.
    template <class Less = std::less<T>> void Sort(Less less = Less())
    {
        TuArraySort(begin(), end(), less);
    }

    void Swap(TuArray& other) noexcept
    {
        swapBlocks(other);
        std::swap(m_growBy, other.m_growBy);
    }
    friend void swap(TuArray& a, TuArray& b) noexcept { a.Swap(b); }
    friend bool operator==(const TuArray& a, const TuArray& b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

    iterator begin() { return m_elements; }
    iterator end() { return m_elements + m_size; }
    const_iterator begin() const { return m_elements; }
    const_iterator end() const { return m_elements + m_size; }
    const_iterator cbegin() const { return m_elements; }
    std::reverse_iterator<iterator> rbegin() { return std::reverse_iterator(end()); }
    std::reverse_iterator<iterator> rend() { return std::reverse_iterator(begin()); }
    std::reverse_iterator<const_iterator> rbegin() const { return std::reverse_iterator(end()); }
    std::reverse_iterator<const_iterator> rend() const { return std::reverse_iterator(begin()); }
    const_iterator cend() const { return m_elements + m_size; }
    T* data() { return m_elements; }
    const T* data() const { return m_elements; }
    unsigned int size() const { return m_size; }
    bool empty() const { return m_size == 0; }

private:
    static constexpr unsigned int kMaximum = std::numeric_limits<unsigned int>::max();

    [[noreturn]] static void throwOutOfMemory()
    {
        throw TuExceptionOutOfMemory(TU_HERE_IN("core/groundwork/tuarray"));
    }
    [[noreturn]] static void throwOutOfRange()
    {
        throw TuExceptionPreconditionViolation(
            TU_HERE_IN("core/groundwork/tuarray"), u"the index lies in the array");
    }
    unsigned int checkedIndex(unsigned int index) const
    {
        if (index >= m_size) {
            throwOutOfRange();
        }
        return index;
    }

    static std::size_t byteSize(unsigned int capacity);
    static T* allocate(unsigned int capacity);
    static void relocate(T* from, unsigned int count, T* to);
    template <class... Args> T& emplaceGrowing(Args&&... args);
    unsigned int getGrownCapacity(unsigned int atLeast) const;
    void growFor(unsigned int count);
    void setCapacity(unsigned int capacity);
    void adoptBlock(T* elements, unsigned int capacity);
    void moveLastTo(unsigned int index);
    void swapBlocks(TuArray& other) noexcept;

    T* m_elements = nullptr;
    unsigned int m_size = 0; // elements in use
    unsigned int m_capacity = 0; // elements allocated
    unsigned int m_growBy = 0;
};

template <class T, class P>
TuArray<T, P>::TuArray(const TuArray& other)
    : TuArray()
{
    m_growBy = other.m_growBy;
    AddRange(other.begin(), other.end());
}

template <class T, class P> TuArray<T, P>& TuArray<T, P>::operator=(const TuArray& other)
{
    if constexpr (P::template kMovesBytes<T>) {
        if (this != &other) {
            if (m_capacity < other.m_size) {
                setCapacity(other.m_size);
            }
            std::uninitialized_copy_n(other.m_elements, other.m_size, m_elements);
            m_size = other.m_size;
            m_growBy = other.m_growBy;
        }
    } else {
        TuArray(other).Swap(*this);
    }
    return *this;
}

template <class T, class P> TuArray<T, P>& TuArray<T, P>::operator=(TuArray&& other) noexcept
{
    TuArray(std::move(other)).Swap(*this);
    return *this;
}

template <class T, class P> TuArray<T, P>::~TuArray()
{
    std::destroy_n(m_elements, m_size);
    TuFreeBlock(m_elements);
}

template <class T, class P> inline bool TuArray<T, P>::Add(const T& element)
{
    const bool grows = m_size == m_capacity;
    Emplace(element);
    return grows;
}

template <class T, class P> inline bool TuArray<T, P>::Add(T&& element)
{
    const bool grows = m_size == m_capacity;
    Emplace(std::move(element));
    return grows;
}

template <class T, class P>
template <class... Args>
inline T& TuArray<T, P>::Emplace(Args&&... args)
{
    if (m_size == m_capacity) {
        return emplaceGrowing(std::forward<Args>(args)...);
    }
    T* const element = ::new (m_elements + m_size) T(std::forward<Args>(args)...);
    ++m_size;
    return *element;
}

/// The new element is made before the old ones leave their block: it may be made from one of them.
template <class T, class P>
template <class... Args>
T& TuArray<T, P>::emplaceGrowing(Args&&... args)
{
    const unsigned int capacity = getGrownCapacity(0);
    if constexpr (P::template kMovesBytes<T>) {
        T element(std::forward<Args>(args)...);
        setCapacity(capacity);
        ::new (m_elements + m_size) T(std::move(element));
    } else {
        T* const elements = allocate(capacity);
        T* made = nullptr;
        try {
            made = ::new (elements + m_size) T(std::forward<Args>(args)...);
            relocate(m_elements, m_size, elements);
        } catch (...) {
            if (made != nullptr) {
                std::destroy_at(made);
            }
            TuFreeBlock(elements);
            throw;
        }
        adoptBlock(elements, capacity);
    }
    return m_elements[m_size++];
}

template <class T, class P>
template <std::forward_iterator Iterator>
void TuArray<T, P>::AddRange(Iterator first, Iterator last)
{
    const auto count = std::distance(first, last);
    if (static_cast<unsigned long long>(count) > kMaximum - m_size) {
        throwOutOfMemory();
    }
    growFor(static_cast<unsigned int>(count));
    std::uninitialized_copy(first, last, m_elements + m_size);
    m_size += static_cast<unsigned int>(count);
}

template <class T, class P> void TuArray<T, P>::Append(const TuArray& other)
{
    if (other.m_size > kMaximum - m_size) {
        throwOutOfMemory();
    }
    const unsigned int count = other.m_size;
    growFor(count);
    // Only now: growing has moved the elements of `other` where it is this array.
    std::uninitialized_copy_n(other.m_elements, count, m_elements + m_size);
    m_size += count;
}

template <class T, class P> void TuArray<T, P>::InsertAt(unsigned int index, const T& element)
{
    if (index != m_size) {
        checkedIndex(index);
    }
    Emplace(element);
    moveLastTo(index);
}

template <class T, class P> void TuArray<T, P>::InsertAt(unsigned int index, T&& element)
{
    if (index != m_size) {
        checkedIndex(index);
    }
    Emplace(std::move(element));
    moveLastTo(index);
}

template <class T, class P> void TuArray<T, P>::moveLastTo(unsigned int index)
{
    T* const last = m_elements + m_size - 1;
    if (m_elements + index != last) {
        T element(std::move(*last));
        std::move_backward(m_elements + index, last, last + 1);
        m_elements[index] = std::move(element);
    }
}

template <class T, class P> void TuArray<T, P>::RemoveAt(unsigned int index, unsigned int count)
{
    if (index > m_size || count > m_size - index) {
        throwOutOfRange();
    }
    if (count != 0) {
        T* const newEnd = std::move(m_elements + index + count, end(), m_elements + index);
        std::destroy(newEnd, end());
        m_size -= count;
    }
}

template <class T, class P>
typename TuArray<T, P>::iterator TuArray<T, P>::Erase(const_iterator position)
{
    const auto index = static_cast<unsigned int>(position - m_elements);
    RemoveAt(index);
    return m_elements + index;
}

template <class T, class P> void TuArray<T, P>::RemoveAll()
{
    std::destroy_n(m_elements, std::exchange(m_size, 0u));
}

template <class T, class P> void TuArray<T, P>::SetSize(unsigned int size)
{
    if (size > m_size) {
        growFor(size - m_size);
        P::Construct(m_elements + m_size, size - m_size);
    } else {
        std::destroy(m_elements + size, end());
    }
    m_size = size;
}

template <class T, class P> void TuArray<T, P>::Reserve(unsigned int capacity)
{
    if (capacity > m_capacity) {
        setCapacity(capacity);
    }
}

template <class T, class P> void TuArray<T, P>::FreeExtra()
{
    if (m_size == 0) {
        TuFreeBlock(std::exchange(m_elements, nullptr));
        m_capacity = 0;
    } else if (m_size < m_capacity) {
        setCapacity(m_size);
    }
}

template <class T, class P>
template <class Value>
unsigned int TuArray<T, P>::Find(const Value& value, unsigned int start) const
{
    for (unsigned int index = start; index < m_size; ++index) {
        if (m_elements[index] == value) {
            return index;
        }
    }
    return kNotFound;
}

template <class T, class P> std::size_t TuArray<T, P>::byteSize(unsigned int capacity)
{
    static_assert(alignof(T) <= alignof(std::max_align_t),
        "the blocks of containers are aligned for fundamental types only");
    constexpr std::size_t kSize = sizeof(T); // NOLINT(bugprone-sizeof-expression): or of a pointer
    if (capacity > std::numeric_limits<std::size_t>::max() / kSize) {
        throwOutOfMemory();
    }
    return std::size_t{ capacity } * kSize;
}

template <class T, class P> T* TuArray<T, P>::allocate(unsigned int capacity)
{
    void* const block = TuAllocateBlock(byteSize(capacity));
    if (block == nullptr) {
        throwOutOfMemory();
    }
    return static_cast<T*>(block);
}

/// Elements whose move may fail are copied, so that the old ones are still whole then.
template <class T, class P> void TuArray<T, P>::relocate(T* from, unsigned int count, T* to)
{
    if constexpr (std::is_nothrow_move_constructible_v<T> || !std::is_copy_constructible_v<T>) {
        std::uninitialized_move_n(from, count, to);
    } else {
        std::uninitialized_copy_n(from, count, to);
    }
}

template <class T, class P> unsigned int TuArray<T, P>::getGrownCapacity(unsigned int atLeast) const
{
    if (m_capacity == kMaximum) {
        throwOutOfMemory();
    }
    const unsigned int step = m_growBy != 0 ? m_growBy : std::max(m_capacity, 1u);
    const unsigned int grown = step > kMaximum - m_capacity ? kMaximum : m_capacity + step;
    return std::max(grown, atLeast);
}

template <class T, class P> void TuArray<T, P>::growFor(unsigned int count)
{
    if (count > kMaximum - m_size) {
        throwOutOfMemory();
    }
    if (count > m_capacity - m_size) {
        setCapacity(getGrownCapacity(m_size + count));
    }
}

template <class T, class P> void TuArray<T, P>::setCapacity(unsigned int capacity)
{
    if constexpr (P::template kMovesBytes<T>) {
        void* const block = TuReallocateBlock(m_elements, byteSize(capacity));
        if (block == nullptr) {
            throwOutOfMemory();
        }
        m_elements = static_cast<T*>(block);
        m_capacity = capacity;
    } else {
        T* const elements = allocate(capacity);
        try {
            relocate(m_elements, m_size, elements);
        } catch (...) {
            TuFreeBlock(elements);
            throw;
        }
        adoptBlock(elements, capacity);
    }
}

template <class T, class P> void TuArray<T, P>::adoptBlock(T* elements, unsigned int capacity)
{
    std::destroy_n(m_elements, m_size);
    TuFreeBlock(std::exchange(m_elements, elements));
    m_capacity = capacity;
}

template <class T, class P> void TuArray<T, P>::swapBlocks(TuArray& other) noexcept
{
    std::swap(m_elements, other.m_elements);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
}
