#pragma once

#include "tabase/tadatamanager.h"
#include "tabase/tadatanodes.h"

#include <utility>

namespace tamesh {

/// A part of a mesh that a command puts in the place of an older one of that name.
///
///     NewPart part(manager, mesh, SPartNames::kPath);
///     part.AddValue<TaDataNodeFloat64, TuFloat64>(u"Length", length);
///     part.Finish();
///
/// Threads: the thread holds a write lock on the mesh's node, and loses it in Finish.
/// Failure: TuException where the tree cannot be changed; TuExceptionOutOfMemory, std::bad_alloc.
///          What is not finished leaves the tree with the object.
class NewPart
{
public:
    NewPart(TaDataManager& manager, const TuSmartPointer<TaNode>& mesh, const CString& name);
    ~NewPart();
    NewPart(const NewPart&) = delete;
    NewPart& operator=(const NewPart&) = delete;

    void Add(const TuSmartPointer<TaNode>& node) { insert(node, m_part); }
    /// A data node with a new value, made of `value`.
    template <class DataNode, class Data, class Value>
    void AddValue(const CString& name, Value&& value)
    {
        Add(TuMake<DataNode>(name, TuMake<Data>(std::forward<Value>(value)), true, true));
    }

    /// Takes the older one away, and gives back all locks of the thread.
    void Finish();

private:
    void insert(const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent);
    void remove(const TuSmartPointer<TaNode>& part);

    TaDataManager& m_manager;
    TuSmartPointer<TaNode> m_former;
    TuSmartPointer<TaNode> m_part;
    bool m_isFinished = false;
};

} // namespace tamesh
