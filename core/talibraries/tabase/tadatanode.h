#pragma once

#include "groundwork/tuexception.h"
#include "groundwork/tuinttotype.h"
#include "groundwork/turtti.h"
#include "tabase/tanode.h"

#include <concepts>
#include <exception>
#include <type_traits>
#include <utility>

/// Holds the one type record that the instances of TaDataNode share: `TaDataNode`.
class TABASE_API TaDataNodeRecord
{
public:
    static const TuRTTI RTTI;

    static constexpr const char16_t* kSource = u"core/talibraries/tabase/tadatanode";
    enum
    {
        kLineNoData = 50
    };
};

/// A node that carries one shared value: a TuBool … TuString, or any class of shared, serializable
/// objects. Derive a class with a type record of its own from it, as TA_DECLARE_DATA_NODE does
/// (tadatanodes.h has those of the boxed values): only such a one can be read back from a stream.
///
///     auto count = TuMake<TuUInt32>(12u);
///     manager.InsertNode(TuMake<TaDataNodeUInt32>(u"Count", count, true, true), parent);
///
/// Ownership: of one reference to the value. Whoever has another may change the value: let him have
///            a granted handle on the node meanwhile, for the lock is the node's, not the value's.
/// Failure:   questions about the type of a value that is not there throw TuException, at
///            kLineNoData.
template <class T> class GROUNDWORK_TEMPLATE TaDataNode : public TaNode, public TaDataNodeRecord
{
    static_assert(std::derived_from<T, TuReferenceCounted> && std::derived_from<T, ISerializable>,
        "a value is a shared object that can be stored");

public:
    using TaDataNodeRecord::RTTI;
    const TuRTTI& GetRTTI() const override;

    /// Without a value.
    TaDataNode();
    TaDataNode(
        const String& name, TuSmartPointer<T> data, bool serializeLeaves, bool trackModified);
    ~TaDataNode() override;

    bool IsSerializable() const override;
    const TuRTTI& GetRTTIData() const override;

    /// Null where there is none yet.
    const TuSmartPointer<T>& GetData();
    TuSmartPointer<const T> GetData() const;

protected:
    /// A new value with the create function of that class. An unknown class, one that is no T, or a
    /// function that throws leave the node as it is.
    void CreateData(const String& className) override;
    ISerializable* getData() const override;

private:
    /// A class without a default constructor has no create function.
    static constexpr int kIsMadeByName = std::is_default_constructible_v<T> ? 1 : 0;

    void createData(const String& className, TuIntToType<1>);
    void createData(const String&, TuIntToType<0>) { }

    TuSmartPointer<T> m_data;
};

// Outside of the class, also what is short: MinGW-w64 exports only that of an instance, and classes
// of users derive from those of the boxed values.

template <class T> TaDataNode<T>::TaDataNode() = default;

template <class T>
TaDataNode<T>::TaDataNode(
    const String& name, TuSmartPointer<T> data, bool serializeLeaves, bool trackModified)
    : TaNode(name, serializeLeaves, trackModified)
    , m_data(std::move(data))
{
}

template <class T> TaDataNode<T>::~TaDataNode() = default;

template <class T> const TuRTTI& TaDataNode<T>::GetRTTI() const { return TaDataNodeRecord::RTTI; }

template <class T> bool TaDataNode<T>::IsSerializable() const { return true; }

template <class T> ISerializable* TaDataNode<T>::getData() const { return m_data.Get(); }

template <class T> const TuSmartPointer<T>& TaDataNode<T>::GetData() { return m_data; }

template <class T> TuSmartPointer<const T> TaDataNode<T>::GetData() const { return m_data; }

template <class T> void TaDataNode<T>::CreateData(const String& className)
{
    createData(className, TuIntToType<kIsMadeByName>());
}

template <class T> const TuRTTI& TaDataNode<T>::GetRTTIData() const
{
    if (m_data.IsNull()) {
        throw TuException(kSource, kLineNoData);
    }
    return m_data->GetRTTI();
}

template <class T> void TaDataNode<T>::createData(const String& className, TuIntToType<1>)
{
    const TuRTTI::CreateFunction create = TuRTTI::getCreate(className);
    if (create == nullptr) {
        return;
    }
    IObject* object = nullptr;
    try {
        object = create();
    } catch (...) {
        return;
    }
    if (auto* data = dynamic_cast<T*>(object); data != nullptr) {
        m_data = TuSmartPointer<T>(data);
    } else {
        delete object;
    }
}

/// The class of the nodes that carry a `Value`, with a record and a create function, so that they
/// can be read back by name; `Api` is what exports it from its library, or nothing. In a source
/// stands TA_DEFINE_DATA_NODE.
///
///     TA_DECLARE_DATA_NODE(, ImageNode, Image);
#define TA_DECLARE_DATA_NODE(Api, Class, Value)                                                    \
    class Api Class : public TaDataNode<Value>                                                     \
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

#define TA_DEFINE_DATA_NODE(Class, Value)                                                          \
    TU_DEFINE_RTTI(Class, TaDataNode<Value>, &Class::CreateByFactory, nullptr);                    \
    IObject* Class::CreateByFactory() { return new Class; }
