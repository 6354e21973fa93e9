#include "platform/inc/shell.h"

#include "platform/win32/systemlibrary.h"
#include "platform/win32/windowsapi.h"

namespace Platform {

namespace {

// The entries as shlobj.h and objbase.h declare them; the item list is only handed on.
using SHGetFolderPathEntry = HRESULT WINAPI(HWND, int, HANDLE, DWORD, LPWSTR);
using SHGetSpecialFolderLocationEntry = HRESULT WINAPI(HWND, int, ItemIdList**);
using SHGetPathFromIDListEntry = BOOL WINAPI(const ItemIdList*, LPWSTR);
using CoTaskMemFreeEntry = void WINAPI(LPVOID);

std::int32_t MissingEntry() {
    return HRESULT_FROM_WIN32(::GetLastError());
}

} // namespace

std::int32_t SHGetFolderPath(Window owner, std::int32_t folder, Handle token, std::uint32_t flags, char16_t* path) {
    auto* entry = SystemProcedure<SHGetFolderPathEntry>(u"shell32.dll", "SHGetFolderPathW");
    return entry ? entry(Native(owner), folder, token, flags, Wide(path)) : MissingEntry();
}

std::int32_t SHGetSpecialFolderLocation(Window owner, std::int32_t folder, ItemIdList*& list) {
    list = nullptr;
    auto* entry = SystemProcedure<SHGetSpecialFolderLocationEntry>(u"shell32.dll", "SHGetSpecialFolderLocation");
    return entry ? entry(Native(owner), folder, &list) : MissingEntry();
}

bool SHGetPathFromIDList(const ItemIdList* list, char16_t* path) {
    *path = u'\0';
    auto* entry = SystemProcedure<SHGetPathFromIDListEntry>(u"shell32.dll", "SHGetPathFromIDListW");
    return entry && entry(list, Wide(path)) != 0;
}

void CoTaskMemFree(void* memory) {
    auto* entry = memory ? SystemProcedure<CoTaskMemFreeEntry>(u"ole32.dll", "CoTaskMemFree") : nullptr;
    if (entry) {
        entry(memory);
    }
}

} // namespace Platform
