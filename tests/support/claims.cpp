#include "tests/support/claims.h"

#include "platform/inc/modules.h"
#include <gtest/gtest.h>
#include <string>

void Claim(Wine wine, std::string_view row, const std::function<void()>& checks) {
    if (Applies(wine)) {
        SCOPED_TRACE((wine == Wine::AsWindows ? "" : "claimed, for Wine answers otherwise: ") + std::string(row));
        checks();
    }
}

bool Applies(Wine wine) {
    static const bool isWine = [] {
        const Platform::Module library = Platform::LoadLibraryEx(u"ntdll.dll", 0);
        return library && Platform::GetProcAddress(library, "wine_get_version");
    }();
    return wine == Wine::AsWindows || !isWine;
}
