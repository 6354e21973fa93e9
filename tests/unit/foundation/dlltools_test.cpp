#include "foundation/inc/DllTools.h"

#include "foundation/inc/filesystem.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <functional>

using namespace Tsx;

namespace {

class CLibrary : public CDll {
public:
    using CDll::Handle;
    using CDll::Ownership;
};

const CUnicodeString Library = TestFile(SOME_LIBRARY);

} // namespace

TEST(Dll, OwnsWhatItLoaded) {
    CLibrary library;
    EXPECT_FALSE(library.IsLoaded());
    library.Load(Library.Text());
    EXPECT_EQ(library.Ownership, 1);
    EXPECT_EQ(Platform::GetModuleHandle(Library.Text()), library.Handle);
    EXPECT_EQ(library.GetPath(), FileSystem::GetModulePath(library.Handle));
    library.Free();
    library.Free();
    EXPECT_FALSE(library.IsLoaded());
    EXPECT_FALSE(Platform::GetModuleHandle(Library.Text()));

    library.Load(Library.Text());
    const Platform::Module module = library.Handle;
    library.Ownership = 0;
    library.Free();
    EXPECT_FALSE(library.IsLoaded());
    EXPECT_EQ(Platform::GetModuleHandle(Library.Text()), module) << "disowned";
    Platform::FreeLibrary(module);
}

TEST(Dll, TellsWhatIsMissing) {
    CLibrary library;
    const auto noLibrary = Raised<CLastErrorException>([&library] { library.Load(u"no such library.dll"); });
    EXPECT_EQ(noLibrary ? noLibrary->code : 0, 126U);
    EXPECT_EQ(library.Ownership, 1);
    library.Load(Library.Text());
    const auto noEntry = Raised<CCheckException>([&library] { library.GetProcedure("NoSuchEntry"); });
    ASSERT_TRUE(noEntry);
    EXPECT_EQ(noEntry->GetMessageText(), u"Cannot load DLL " + library.GetPath() + u" (NoSuchEntry).\n");
}

TEST(Dll, WrongCallsAreInternalErrors) {
    CLibrary loaded;
    loaded.Load(Library.Text());
    CLibrary odd;
    odd.Handle = loaded.Handle;
    odd.Ownership = 2;
    CLibrary empty;
    ExpectInternalErrors("src\\dlltools", {{34, [&] { loaded.Load(u"any"); }},
                                           {73, [&] { odd.Free(); }},
                                           {81, [&] { empty.GetPath(); }},
                                           {93, [&] { empty.GetProcedure("any"); }}});
    EXPECT_FALSE(odd.IsLoaded()) << "forgotten all the same";
}
