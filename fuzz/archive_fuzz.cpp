// The archive reader. The first eight bytes tell, over and over, what is read next; the rest is the file.
#include "foundation/inc/archive.h"
#include "foundation/inc/classregistry.h"
#include "fuzz/target.h"
#include "tests/support/memoryfile.h"

using namespace Tsx;

namespace {

/// An object with up to two others in it.
class CNode : public IObject {
public:
    void Serialize(CArchive& archive) override {
        static int depth = 0;
        struct CDepth {
            CDepth() { ++depth; }
            ~CDepth() { --depth; }
        } const scope;
        archive >> name;
        if (depth < 100) {
            first = archive.ReadObject();
            second = archive.ReadObject();
        }
    }

private:
    CString name;
    CHolder<IObject> first;
    CHolder<IObject> second;
};

const CClassRegistration NodeClass(u"Node", typeid(CNode), []() -> IObject* {
    auto* node = new CNode;
    node->AddReference();
    return node;
});

void ReadNext(CArchive& archive, unsigned what) {
    char bytes[256];
    CString string;
    switch (what % 5) {
    case 0:
        archive.ReadCount();
        break;
    case 1:
        archive >> string;
        break;
    case 2:
        archive.ReadObject();
        break;
    case 3:
        archive.Flush();
        archive.Read(bytes, 1);
        break;
    default:
        archive.Read(bytes, static_cast<std::int32_t>(1 + what % sizeof bytes));
    }
}

} // namespace

void RunInput(const std::string& bytes) {
    constexpr std::size_t choices = 8;
    if (bytes.size() < choices) {
        return;
    }
    CMemoryFile file(bytes.substr(choices));
    CArchive archive(&file, AD_Load);
    for (std::size_t i = 0;; ++i) {
        const std::int64_t before = archive.GetPosition();
        ReadNext(archive, static_cast<unsigned char>(bytes[i % choices]));
        Require(archive.GetPosition() > before && archive.GetPosition() <= file.GetLength());
    }
}
