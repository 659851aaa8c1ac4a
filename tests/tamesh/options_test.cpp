#include "support/environment.h"
#include "support/temporaryfolder.h"
#include "tamesh/fakeconsole.h"
#include "tamesh/optionscommands.h"
#include "tamesh/settings.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using namespace tamesh;

TEST(OptionsTextTest, WhatIsExportedIsImportedUnitForUnit)
{
    const std::u16string name = u"a\tb%\xD800z\x7F\xD83D\xDE00\u00E4"; // a half and a whole pair
    const std::vector<unsigned char> unpaired{ 1, 2, 3 }; // a text with half a unit
    for (const platform::SRegistryValue& value :
        { MakeOptionValue("n", "-1"), MakeOptionValue("n", "4294967295"),
            MakeOptionValue("n", "4294967296"), MakeTextOptionValue("", "17\r\n"),
            platform::SRegistryValue{ name, platform::ERegistryType(3), { 0, 255 } },
            platform::SRegistryValue{ name, platform::eRT_Text, unpaired },
            platform::SRegistryValue{ name, platform::eRT_Number, unpaired },
            platform::SRegistryValue{ name, platform::eRT_Text, {} } }) {
        const SOption option{ platform::eRo_LocalMachine, u"Software\\" + name, value };
        const std::string line = FormatOption(option);
        EXPECT_EQ(line.find_first_of("\r\n"), line.npos) << line;
        const SOption read = ParseOption(line);
        EXPECT_EQ(read.root, option.root) << line;
        EXPECT_EQ(read.key, option.key) << line;
        EXPECT_EQ(read.value.name, value.name) << line;
        EXPECT_EQ(read.value.type, value.type) << line;
        EXPECT_EQ(read.value.data, value.data) << line;
    }
    EXPECT_EQ(MakeOptionValue("n", "4294967296").type, platform::eRT_Text);
    EXPECT_EQ(MakeOptionValue("n", "-2147483649").type, platform::eRT_Text);
}

TEST(OptionsTextTest, ALineThatIsNoOptionIsRefused)
{
    for (const char* line : { "", "user", "user\ta\tb\tnumber", "root\ta\tb\tnumber\t1",
             "user\ta\tb\tnumber\t4294967296", "user\ta\tb\tnumber\t1 ", "user\ta\tb\tnumber\t",
             "user\t%12\tb\tnumber\t1", "user\t%12G4\tb\tnumber\t1", "user\ta\tb\t3\t0",
             "user\ta\tb\t3\t0x", "user\ta\tb\tother\t00" }) {
        EXPECT_THROW(static_cast<void>(ParseOption(line)), std::invalid_argument) << line;
    }
}

TEST(OptionsCommandsTest, AnExportIsKnownByItsFirstLineAndAnInterruptEndsTheRest)
{
    const TemporaryFolder folder;
    SetEnvironment("TABASE_REGISTRY_FOLDER", folder.GetPath("").string());
    const std::string name = (folder / "saved.txt").ToUtf8();
    FakeConsole console;
    folder.WriteAll("saved.txt", "");
    EXPECT_EQ(ImportOptions(console, name), eEC_Failed);
    EXPECT_EQ(console.error, name + ":1: this is not an export of options\n");
    folder.WriteAll("saved.txt", "tamesh options 1\nuser\ta\tb\tnumber\t1\n");
    console.interrupt.Set();
    EXPECT_EQ(ImportOptions(console, name), eEC_Interrupted);
    EXPECT_EQ(ListOptions(console, platform::eRo_CurrentUser, ""), eEC_Interrupted);
}

TEST(SettingsTest, OnlyWhatMakesSenseIsTaken)
{
    Settings settings;
    settings.Assign("digits=17");
    for (const char* assignment : { "digits=18", "digits=-1", "digits=1.5", "digits=1 ", "digits",
             "", "=1", "Digits=1", "progress=1", "progress=maybe" }) {
        EXPECT_THROW(settings.Assign(assignment), std::invalid_argument) << assignment;
    }
    EXPECT_EQ(settings.GetDigits(), 17);
    settings.Assign("progress=false");
    EXPECT_FALSE(settings.IsProgressShown());
    settings.Assign("digits=");
    EXPECT_EQ(settings.GetDigits(), 0);
}

} // namespace
