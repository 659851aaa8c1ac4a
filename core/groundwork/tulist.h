#pragma once

#include "groundwork/tulistbaseintermediate.h"

#include <functional>
#include <initializer_list>

/// A doubly linked list that keeps the order of insertion: for elements that must stay where they
/// are in memory, or come and go in the middle. Where neither matters, TuArray is smaller.
///
/// Flags add up: 1, the list can be walked; 16, elements may be changed through iterators. 17 is
/// the usual list, 1 the one whose elements stay as they were added. Nodes come in blocks from a
/// TuPlexManager, which the list makes at its first insertion unless it is given one to share.
/// Iterators stay valid until their own element is removed, or the list is swapped or moved.
///
///     TuList<CString> names{ u"Root", u"Leaf" };
///     names.AddHead(u"Forest");
///     for (const CString& name : names)
///         Print(name);
///
/// Ownership: of its elements; of its plex manager together with those that share it.
/// Threads:   many readers, or one writer. Lists that share a plex manager count as one.
/// Failure:   TuExceptionOutOfMemory (see TuPlexManager), also when Size cannot count one more
///            element; TuExceptionPreconditionViolation for the ends of an empty list, and at the
///            first insertion for a block size of 0. The list is then as it was, after a failed
///            read, too.
template <class T, int Flags = eI_Iterable + eI_Mutable, class Size = unsigned int,
    class Linking = TuListPolicyDoubleLinked, class Closing = TuListPolicyNotCloseable,
    class Comparing = TuListPolicyComparable, class Serializing = TuListPolicySerializable>
class TuList
    : public TuListBaseIntermediate<T, Flags, Size, Linking, Closing, Comparing, Serializing>
{
    using Base = TuListBaseIntermediate<T, Flags, Size, Linking, Closing, Comparing, Serializing>;

public:
    using typename Base::const_iterator;
    using typename Base::iterator;
    using typename Base::PlexManager;

    TuList()
        : TuList(PlexManager::kDefaultBlockSize)
    {
    }
    explicit TuList(unsigned int blockSize)
        : Base(blockSize)
    {
    }
    explicit TuList(TuSmartPointer<PlexManager> plexManager)
        : Base(std::move(plexManager))
    {
    }
    TuList(std::initializer_list<T> elements);
    TuList(const TuList& other)
        : TuList(other.GetBlockSize())
    {
        Base::appendCopies(other);
    }
    TuList(TuList&& other) noexcept = default;
    /// Keeps its own plex manager.
    TuList& operator=(const TuList& other);
    TuList& operator=(TuList&& other) noexcept;
    ~TuList() override = default;

    /// Appends; returns the place of the new element.
    iterator Add(const T& element) { return Emplace(element); }
    iterator Add(T&& element) { return Emplace(std::move(element)); }
    iterator AddTail(const T& element) { return Emplace(element); }
    iterator AddTail(T&& element) { return Emplace(std::move(element)); }
    iterator AddHead(const T& element) { return addHead(element); }
    iterator AddHead(T&& element) { return addHead(std::move(element)); }
    /// Appends an element made from `args`.
    template <class... Args> iterator Emplace(Args&&... args)
    {
        return Base::iteratorTo(Base::insertBefore(nullptr, std::forward<Args>(args)...));
    }
    void push_back(const T& element) { Emplace(element); }
    void push_back(T&& element) { Emplace(std::move(element)); }
    /// Appends copies; a list may be appended to itself.
    void Append(const TuList& other);

    /// Before the end is behind the tail.
    iterator InsertBefore(const_iterator position, const T& element)
    {
        return Base::iteratorTo(Base::insertBefore(Base::nodeOf(position), element));
    }
    iterator InsertBefore(const_iterator position, T&& element)
    {
        return Base::iteratorTo(Base::insertBefore(Base::nodeOf(position), std::move(element)));
    }
    iterator InsertAfter(const_iterator position, const T& element)
    {
        return InsertBefore(behind(position), element);
    }
    iterator InsertAfter(const_iterator position, T&& element)
    {
        return InsertBefore(behind(position), std::move(element));
    }

    /// A bubble sort that stops after a pass without a swap: stable, and quick where few elements
    /// are out of place. Iterators move with their elements.
    template <class Less = std::less<T>> void Sort(Less less = Less()) { Base::bubbleSort(less); }

    using Base::Serialize;
    void Serialize(TuStreamReadBinary& stream);

    /// Plex managers change hands, too.
    void Swap(TuList& other) noexcept { Base::swapNodes(other); }
    friend void swap(TuList& a, TuList& b) noexcept { a.Swap(b); }

private:
    static const_iterator behind(const_iterator position)
    {
        TU_ASSERT(Base::nodeOf(position) != nullptr, "nothing comes behind the end of a list");
        return ++position;
    }
    template <class Value> iterator addHead(Value&& element)
    {
        return Base::iteratorTo(
            Base::insertBefore(Base::getHeadNode(), std::forward<Value>(element)));
    }
    /// An empty list that draws on the same nodes.
    TuList makeSibling() const
    {
        return Base::getPlexManager().IsNull() ? TuList(Base::GetBlockSize())
                                               : TuList(Base::getPlexManager());
    }
};

template <class T, int F, class S, class L, class C, class P, class Z>
TuList<T, F, S, L, C, P, Z>::TuList(std::initializer_list<T> elements)
    : TuList()
{
    for (const T& element : elements) {
        Add(element);
    }
}

template <class T, int F, class S, class L, class C, class P, class Z>
TuList<T, F, S, L, C, P, Z>& TuList<T, F, S, L, C, P, Z>::operator=(const TuList& other)
{
    TuList copy = makeSibling();
    copy.appendCopies(other);
    Swap(copy);
    return *this;
}

template <class T, int F, class S, class L, class C, class P, class Z>
TuList<T, F, S, L, C, P, Z>& TuList<T, F, S, L, C, P, Z>::operator=(TuList&& other) noexcept
{
    TuList(std::move(other)).Swap(*this);
    return *this;
}

template <class T, int F, class S, class L, class C, class P, class Z>
void TuList<T, F, S, L, C, P, Z>::Append(const TuList& other)
{
    TuList copies = makeSibling();
    copies.appendCopies(other);
    Base::takeNodes(copies);
}

template <class T, int F, class S, class L, class C, class P, class Z>
void TuList<T, F, S, L, C, P, Z>::Serialize(TuStreamReadBinary& stream)
{
    TuList read = makeSibling();
    Base::readElements(stream, [&read](T&& element) { read.Add(std::move(element)); });
    Swap(read);
}
