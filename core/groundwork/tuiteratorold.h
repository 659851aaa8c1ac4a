#pragma once

#include "groundwork/tuexceptions.h"

#include <cstddef>
#include <iterator>

/// The iterators that are asked for one element after the other, in the manner of an enumeration:
/// whoever walks asks whether there is more, and takes it. `Implementation` derives from this class
/// and supplies, public, `bool hasElement() const`, `Element getElement() const` and `void step()`;
/// `Element` is what is given out, as a rule a reference.
///
///     while (path.HasMoreElements())
///         Visit(path.NextElement());
///     for (TaGraphNode& node : path) // the same
///         Visit(node);
///
/// Containers have standard iterators; this form is for walks that have a state of their own.
///
/// Failure: TuExceptionPreconditionViolation where an element is taken and there is none.
template <class Element, class Implementation> class TuIteratorOld
{
public:
    /// For loops: walks on from where the iterator stands, and takes it along.
    class Walk
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Element;
        using difference_type = std::ptrdiff_t;
        using reference = Element;
        using pointer = void;

        explicit Walk(Implementation& iterator)
            : m_iterator(&iterator)
        {
        }
        Element operator*() const { return m_iterator->getElement(); }
        Walk& operator++()
        {
            m_iterator->step();
            return *this;
        }
        void operator++(int) { m_iterator->step(); }
        friend bool operator==(const Walk& walk, std::default_sentinel_t)
        {
            return !walk.m_iterator->hasElement();
        }

    private:
        Implementation* m_iterator;
    };

    bool HasMoreElements() const { return implementation().hasElement(); }
    /// The current element; steps on to the next.
    Element NextElement()
    {
        if (!HasMoreElements()) {
            throw TuExceptionPreconditionViolation(
                TU_HERE_IN("core/groundwork/tuiteratorold"), u"there is one more element");
        }
        Element element = implementation().getElement();
        implementation().step();
        return element;
    }

    Walk begin() { return Walk(implementation()); }
    std::default_sentinel_t end() const { return std::default_sentinel; }

protected:
    TuIteratorOld() = default;
    TuIteratorOld(const TuIteratorOld&) = default;
    TuIteratorOld& operator=(const TuIteratorOld&) = default;
    ~TuIteratorOld() = default;

private:
    Implementation& implementation() { return static_cast<Implementation&>(*this); }
    const Implementation& implementation() const
    {
        return static_cast<const Implementation&>(*this);
    }
};
