// The program that a start is measured against under Wine: it does nothing but start what the program must start too.
// It loads the shell's library, as a program does that takes its command line apart by it, and starts OLE and ends it.
extern "C" __declspec(dllimport) char16_t** CommandLineToArgvW(const char16_t* line, int* count);
extern "C" __declspec(dllimport) long OleInitialize(void* reserved);
extern "C" __declspec(dllimport) void OleUninitialize();

// A variable, so that the import is not left out as unused.
auto* volatile imported = &CommandLineToArgvW;

int main() {
    if (OleInitialize(nullptr) >= 0) {
        OleUninitialize();
    }
}
