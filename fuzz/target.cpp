#include "fuzz/target.h"

#include "foundation/inc/threadobject.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Tsx::ThreadErrorMode.Get()->NoExceptions = false;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        RunInput({data, data + size});
    } catch (Tsx::CInternalError*) {
        std::abort(); // data from outside never break an assumption
    } catch (Tsx::CException* exception) {
        delete exception;
    }
    return 0;
}
