// The system's own type of identifiers beside ours.

#include "tabase/tauniqueid.h"

#include <gtest/gtest.h>
#include <rpc.h>
#include <windows.h>

namespace {

TEST(WindowsIdentifierTest, TheSystemsTypeIsTakenAndGiven)
{
    UUID system;
    ASSERT_EQ(::UuidCreate(&system), RPC_S_OK);
    TaUniqueID id(system);
    const UUID back = id;
    EXPECT_TRUE(::IsEqualGUID(back, system));
    EXPECT_TRUE(id == system && system == id && !(id != system));
    EXPECT_TRUE(id <= system && system >= id && !(system < id) && !(id > system));
    EXPECT_EQ(TaUniqueID::GetUniqueID(system), static_cast<const String&>(id));
    id = ::GUID{};
    EXPECT_TRUE(id.IsInvalid());
    EXPECT_TRUE(id != system && system != id && id < system);
}

} // namespace
