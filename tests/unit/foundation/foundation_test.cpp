#include "foundation/inc/foundation.h"

#include "foundation/inc/filesystem.h"
#include "foundation/src/statics.h"
#include "platform/inc/modules.h"
#include "tests/support/text.h"

using namespace Tsx;

namespace {

std::int32_t starts = 0;
std::int32_t stops = 0;

void NoteStart() {
    ++starts;
}

void NoteStop() {
    ++stops;
}

} // namespace

TEST(Foundation, NestedStartsDoTheWorkOnce) {
    AddStaticModule(nullptr, &NoteStart, &NoteStop);
    ExceptionsEnabled = false;
    for (std::int32_t round = 1; round <= 2; ++round) {
        EXPECT_TRUE(InitializeFoundation(nullptr, u"Software\\Elsewhere"));
        EXPECT_TRUE(InitializeFoundation(u"ignored", u"ignored"));
        EXPECT_EQ(starts, round);
        EXPECT_EQ(UserRegistryPath, u"Software\\Ostrel\\foundation_test");
        EXPECT_EQ(MachineRegistryPath, u"Software\\Elsewhere");
        DeinitializeFoundation();
        EXPECT_EQ(GetFoundationState(), FS_Initialised);
        EXPECT_EQ(stops, round - 1);
        DeinitializeFoundation();
        EXPECT_EQ(GetFoundationState(), FS_Stopped);
        EXPECT_EQ(stops, round);
        DeinitializeFoundation(); // one too many does nothing
    }
    EXPECT_FALSE(ExceptionsEnabled) << "as it was found";
    ExceptionsEnabled = true;
    ModuleList.RemoveAll();
}

TEST(Foundation, KnowsItsModule) {
    EXPECT_EQ(GetModuleDirectory(), FileSystem::GetProgramDirectory());
    EXPECT_EQ(GetProgramTitle(), u"foundation_test");
    StoreProgramModule(Platform::GetProgramModule()); // the same once more
    int other = 0;
    EXPECT_TRUE(Raised<CInternalError>([&other] { StoreProgramModule(reinterpret_cast<Platform::Module>(&other)); }));
    ProgramModule = nullptr;
    EXPECT_EQ(GetModuleDirectory(), FileSystem::GetProgramDirectory());
    EXPECT_EQ(ProgramModule, Platform::GetProgramModule()) << "taken and stored";
}
