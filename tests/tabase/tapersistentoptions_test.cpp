#include "tabase/tapersistentoptions.h"

#include "groundwork/tuloglistenermanager.h"
#include "platform/platformregistry.h"
#include "support/environment.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using Options = TaPersistentOptions;

constexpr auto kUser = Options::ePOC_CurrentUser;
constexpr char16_t kSource[] = u"core/talibraries/tabase/tapersistentoptions";

class TaPersistentOptionsTest : public testing::Test
{
protected:
    TaPersistentOptionsTest()
    {
        SetEnvironment("TABASE_REGISTRY_FOLDER", m_folder.GetPath("").string());
    }
    ~TaPersistentOptionsTest() override
    {
        static_cast<void>(platform::RemoveRegistryKey(platform::eRo_CurrentUser, m_key));
    }

    /// The type and the bytes that are stored.
    platform::SRegistryValue GetStored(std::u16string_view name)
    {
        std::vector<platform::SRegistryValue> values;
        EXPECT_TRUE(platform::ListRegistryValues(platform::eRo_CurrentUser, m_key, values));
        for (const platform::SRegistryValue& value : values) {
            if (value.name == name) {
                return value;
            }
        }
        return {};
    }

    template <class T> void Write(const char16_t* name, const T& value)
    {
        EXPECT_EQ(Options::WriteOption(m_key, name, value, kUser), 1);
    }
    template <class T> T Read(const char16_t* name, T value)
    {
        EXPECT_EQ(Options::ReadOption(m_key, name, value, kUser), 1);
        return value;
    }
    CString ReadText(const char16_t* name)
    {
        CString value;
        EXPECT_EQ(Options::ReadOption(m_key, name, value, 100, kUser), 1);
        return value;
    }

    TemporaryFolder m_folder;
    const CString m_key = CString::FromUtf8("TaBaseTest" + std::to_string(std::random_device()()));
};

using Bytes = std::vector<unsigned char>;

TEST_F(TaPersistentOptionsTest, NumbersAreStoredAs32Bits)
{
    Write(u"bool", true);
    Write(u"int", -2);
    Write(u"unsigned", 0xFFFFFFFEU);
    Write(u"long", 4000000000UL);
    EXPECT_EQ(GetStored(u"bool").data, (Bytes{ 1, 0, 0, 0 }));
    EXPECT_EQ(GetStored(u"int").data, (Bytes{ 0xFE, 0xFF, 0xFF, 0xFF }));
    EXPECT_EQ(GetStored(u"int").type, platform::eRT_Number);
    EXPECT_TRUE(Read(u"bool", false));
    EXPECT_EQ(Read(u"int", 0), -2);
    EXPECT_EQ(Read(u"int", 0UL), 0xFFFFFFFEUL); // no sign goes into the upper half
    EXPECT_EQ(Read(u"unsigned", 0U), 0xFFFFFFFEU);
    EXPECT_EQ(Read(u"long", 7UL), 4000000000UL);

    Write(u"bool", 2);
    EXPECT_FALSE(Read(u"bool", true)); // only 1 is true
    EXPECT_EQ(Read(u"bool", 0), 2);
}

TEST_F(TaPersistentOptionsTest, TextsAreStoredWithoutATerminator)
{
    Write(u"text", u"abc");
    EXPECT_EQ(GetStored(u"text").data, (Bytes{ 'a', 0, 'b', 0, 'c', 0 }));
    EXPECT_EQ(GetStored(u"text").type, platform::eRT_Text);
    CString value = u"before";
    EXPECT_EQ(Options::ReadOption(m_key, u"text", value, 2, kUser), 0);
    EXPECT_EQ(value, u"before");
    for (const unsigned long maxChars : { 3UL, ~0UL / 2 + 1, ~0UL }) {
        value = u"before";
        EXPECT_EQ(Options::ReadOption(m_key, u"text", value, maxChars, kUser), 1);
        EXPECT_EQ(value, u"abc");
    }
    Write(u"text", L"w\u00e4"); // no bool
    EXPECT_EQ(ReadText(u"text"), u"w\u00e4");
    Write(u"text", CString());
    EXPECT_EQ(ReadText(u"text"), u"");

    // All of it is stored, but what is read ends at a zero.
    Write(u"text", CString(u"a\0b", 3));
    EXPECT_EQ(GetStored(u"text").data.size(), 6U);
    EXPECT_EQ(ReadText(u"text"), u"a");
}

TEST_F(TaPersistentOptionsTest, TheStoredTypeDoesNotCount)
{
    Write(u"text", u"A");
    EXPECT_EQ(Read(u"text", 0x12345678), 0x12340041); // two bytes are there
    EXPECT_FALSE(Read(u"text", true));
    Write(u"text", u"abc");
    int number = 5;
    EXPECT_EQ(Options::ReadOption(m_key, u"text", number, kUser), 0); // six are too many
    EXPECT_EQ(number, 5);
    Write(u"number", 0x00620061);
    EXPECT_EQ(ReadText(u"number"), u"ab");
    const unsigned char odd[] = { 'a', 0, 'b' };
    EXPECT_TRUE(platform::WriteRegistry(
        platform::eRo_CurrentUser, m_key, u"odd", platform::eRT_Text, odd, sizeof(odd)));
    EXPECT_EQ(ReadText(u"odd"), u"ab");
}

TEST_F(TaPersistentOptionsTest, WhatIsNotThereLeavesTheTarget)
{
    bool flag = true;
    int number = 5;
    unsigned long wide = 6;
    CString text = u"before";
    TuVariant variant = 7;
    for (const int category : { 1, 5, -1 }) { // the last two are none
        const auto root = static_cast<Options::EPersistentOptionsCategory>(category);
        EXPECT_EQ(Options::ReadOption(m_key, u"v", flag, root), 0);
        EXPECT_EQ(Options::ReadOption(m_key, u"v", number, root), 0);
        EXPECT_EQ(Options::ReadOption(m_key, u"v", wide, root), 0);
        EXPECT_EQ(Options::ReadOption(m_key, u"v", text, 100, root), 0);
        EXPECT_EQ(Options::ReadOption(m_key, u"v", variant, TuVariant::eVT_Int32, root), 0);
        if (category != 1) {
            EXPECT_EQ(Options::WriteOption(m_key, u"v", 1, root), 0);
            EXPECT_EQ(Options::WriteOption(m_key, u"v", u"t", root), 0);
        }
    }
    EXPECT_TRUE(flag && number == 5 && wide == 6 && text == u"before" && variant == 7);
}

TEST_F(TaPersistentOptionsTest, VariantsOfSomeKindsAreRead)
{
    Write(u"number", TuVariant(-1));
    Write(u"text", TuVariant(u"abc"));
    EXPECT_EQ(GetStored(u"text").type, platform::eRT_Text);
    for (int kind = 0; kind <= 9; ++kind) {
        const auto type = static_cast<TuVariant::EVariantType>(kind);
        TuVariant value;
        if (kind == 1 || kind == 2 || kind == 4) {
            EXPECT_EQ(Options::ReadOption(m_key, u"number", value, type, kUser), 1);
            EXPECT_EQ(value.GetType(), kind == 4 ? TuVariant::eVT_UInt32 : TuVariant::eVT_Int32);
            EXPECT_EQ(value, kind == 4 ? TuVariant(0xFFFFFFFFU) : TuVariant(-1));
        } else if (kind == 5 || kind == 6 || kind == 8) {
            EXPECT_EQ(Options::ReadOption(m_key, u"text", value, type, kUser), 1);
            EXPECT_EQ(value.GetType(), TuVariant::eVT_WideText);
            EXPECT_EQ(value, TuVariant(u"abc"));
        } else { // whatever the category
            const auto none = static_cast<Options::EPersistentOptionsCategory>(5);
            ExpectFailure<TuException>(
                [&] { Options::ReadOption(m_key, u"text", value, type, none); }, kSource, 232);
        }
    }
    const CString longest(std::u16string(1024, u'x'));
    TuVariant value;
    Write(u"text", longest);
    EXPECT_EQ(Options::ReadOption(m_key, u"text", value, TuVariant::eVT_WideText, kUser), 1);
    Write(u"text", longest + u"x");
    EXPECT_EQ(Options::ReadOption(m_key, u"text", value, TuVariant::eVT_WideText, kUser), 0);
    EXPECT_EQ(value.ToString(), longest);
}

TEST_F(TaPersistentOptionsTest, VariantsOfFewerKindsAreWritten)
{
    Write(u"v", TuVariant(0xFFFFFFFFU));
    EXPECT_EQ(GetStored(u"v").data, Bytes(4, 0xFF));
    for (const TuVariant& value : { TuVariant(), TuVariant(true), TuVariant(5LL), TuVariant("abc"),
             TuVariant::FromPath(u"abc"), TuVariant(2.5) }) {
        ExpectFailure<TuException>(
            [&] { Options::WriteOption(m_key, u"v", value, kUser); }, kSource, 266);
    }
    EXPECT_EQ(GetStored(u"v").data, Bytes(4, 0xFF));
}

#if !defined(_WIN32)

TEST_F(TaPersistentOptionsTest, TheLogHearsOfAStoreThatIsSetAside)
{
    struct Listener : TuLogListener
    {
        void onLog(const SLogLine& line) override { text = line.text.ToUtf8(); }
        std::string text;
    };
    const TuSmartPointer<Listener> listener = TuMake<Listener>();
    TuLogListenerManager::GetInstance().AddListener(listener);
    m_folder.WriteAll("user.registry", "garbage");
    Write(u"v", 1);
    TuLogListenerManager::GetInstance().RemoveListener(*listener);
    EXPECT_NE(listener->text.find("user.registry.unreadable-1"), std::string::npos)
        << listener->text;
}

#endif

} // namespace
