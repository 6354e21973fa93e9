#include "platform/inc/process.h"

int main() {
    return ProgramMain();
}
