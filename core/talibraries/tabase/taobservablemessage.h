#pragma once

#include <cstdint>

/// What an observable tells its observers: the type of the message, and the user data that belongs
/// to it. A small value.
class TaObservableMessage
{
public:
    /// Only the first has a meaning for all observables. That of the others belongs to the classes
    /// that derive from TaObservable, which give them names of their own:
    ///
    ///     static constexpr auto kMoved = TaObservableMessage::eMT_1;
    enum EMessageType : std::uint32_t
    {
        eMT_Destroyed = 0, // the observable is being destroyed
        eMT_1 = 1,
        eMT_2 = 2,
        eMT_3 = 3,
        eMT_4 = 4,
        eMT_5 = 5,
        eMT_6 = 6,
        eMT_7 = 7,
        eMT_8 = 8,
        eMT_9 = 9,
        eMT_10 = 10,
        eMT_11 = 11,
        eMT_12 = 12,
        eMT_13 = 13,
        eMT_14 = 14,
        eMT_15 = 15,
        eMT_16 = 16,
        eMT_17 = 17,
        eMT_18 = 18,
        eMT_19 = 19,
        eMT_20 = 20,
        eMT_21 = 21,
    };

    static constexpr std::uint32_t kTypeCount = 22;

    TaObservableMessage(EMessageType type, void* userData)
        : m_type(type)
        , m_userData(userData)
    {
    }

    EMessageType GetType() const { return m_type; }
    void* GetUserData() const { return m_userData; }

private:
    EMessageType m_type;
    void* m_userData;
};
