#pragma once

#include "groundwork/tuboxed.h"
#include "tabase/tadatanode.h"

extern template class TABASE_API TaDataNode<TuBool>;
extern template class TABASE_API TaDataNode<TuChar>;
extern template class TABASE_API TaDataNode<TuInt8>;
extern template class TABASE_API TaDataNode<TuInt16>;
extern template class TABASE_API TaDataNode<TuInt32>;
extern template class TABASE_API TaDataNode<TuLong>;
extern template class TABASE_API TaDataNode<TuInt64>;
extern template class TABASE_API TaDataNode<TuUInt8>;
extern template class TABASE_API TaDataNode<TuUInt16>;
extern template class TABASE_API TaDataNode<TuUInt32>;
extern template class TABASE_API TaDataNode<TuULong>;
extern template class TABASE_API TaDataNode<TuUInt64>;
extern template class TABASE_API TaDataNode<TuFloat32>;
extern template class TABASE_API TaDataNode<TuFloat64>;
extern template class TABASE_API TaDataNode<TuString>;

/// One data node class: the node of a boxed value, with a record and a create function, so that it
/// can be read back by name.
#define TA_DECLARE_DATA_NODE(Class, Value)                                                         \
    class TABASE_API Class : public TaDataNode<Value>                                              \
    {                                                                                              \
        TU_DECLARE_RTTI                                                                            \
                                                                                                   \
    public:                                                                                        \
        Class() = default;                                                                         \
        Class(const String& name, TuSmartPointer<Value> data, bool serializeLeaves,                \
            bool trackModified)                                                                    \
            : TaDataNode(name, std::move(data), serializeLeaves, trackModified)                    \
        {                                                                                          \
        }                                                                                          \
                                                                                                   \
    private:                                                                                       \
        static IObject* CreateByFactory();                                                         \
    }

TA_DECLARE_DATA_NODE(TaDataNodeBool, TuBool);
TA_DECLARE_DATA_NODE(TaDataNodeChar, TuChar);
TA_DECLARE_DATA_NODE(TaDataNodeInt8, TuInt8);
TA_DECLARE_DATA_NODE(TaDataNodeInt16, TuInt16);
TA_DECLARE_DATA_NODE(TaDataNodeInt32, TuInt32);
TA_DECLARE_DATA_NODE(TaDataNodeLong, TuLong);
TA_DECLARE_DATA_NODE(TaDataNodeInt64, TuInt64);
TA_DECLARE_DATA_NODE(TaDataNodeUInt8, TuUInt8);
TA_DECLARE_DATA_NODE(TaDataNodeUInt16, TuUInt16);
TA_DECLARE_DATA_NODE(TaDataNodeUInt32, TuUInt32);
TA_DECLARE_DATA_NODE(TaDataNodeULong, TuULong);
TA_DECLARE_DATA_NODE(TaDataNodeUInt64, TuUInt64);
TA_DECLARE_DATA_NODE(TaDataNodeFloat32, TuFloat32);
TA_DECLARE_DATA_NODE(TaDataNodeFloat64, TuFloat64);
TA_DECLARE_DATA_NODE(TaDataNodeString, TuString);
