// The program that a start is measured against under Wine: it does nothing, and loads the shell's library, as a program
// does that takes its command line apart by it.
extern "C" __declspec(dllimport) char16_t** CommandLineToArgvW(const char16_t* line, int* count);

// A variable, so that the import is not left out as unused.
auto* volatile imported = &CommandLineToArgvW;

int main() {}
