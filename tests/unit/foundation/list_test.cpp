#include "foundation/inc/list.h"

#include "foundation/inc/tree.h"
#include "tests/support/text.h"
#include <cstring>

using namespace Tsx;

namespace {

std::string deleted; // the names of those that went, in order, with "!" behind one that was in a list

struct CItem : CListNode<CItem> {
    explicit CItem(char itsName, CListNodeBase* goesToo = nullptr) : name(itsName), takesAlong(goesToo) {}
    ~CItem() override {
        deleted += name;
        deleted += List || Previous || Next ? "!" : "";
        delete takesAlong;
    }
    char name;
    CListNodeBase* takesAlong;
};

struct CBranch : CTree<CBranch> {
    explicit CBranch(char itsName) : name(itsName) {}
    ~CBranch() override { deleted += name; }
    char name;
};

std::string Names(const CList<CItem>& list) {
    std::string names;
    for (const CItem& item : list) {
        names += item.name;
    }
    names += '|';
    for (const CItem* item = list.GetLast(); item; item = item->GetPrevious()) {
        names += item->name;
        EXPECT_EQ(item->GetList(), &list);
    }
    return names;
}

} // namespace

TEST(List, NodesLeaveFromAnyPlace) {
    struct Row {
        const char* leaving;
        const char* left; // forwards and backwards
    };
    constexpr Row rows[] = {{"a", "bcd|dcb"}, {"d", "abc|cba"}, {"b", "acd|dca"}, {"bc", "ad|da"},
                            {"cb", "ad|da"},  {"abc", "d|d"},   {"dcb", "a|a"},   {"bacd", "|"}};
    for (const Row& row : rows) {
        CList<CItem> list;
        CItem* items[] = {new CItem('a'), new CItem('b'), new CItem('c'), new CItem('d')};
        list.AddLast(items[2]);
        list.AddFirst(items[1]);
        list.AddLast(items[3]);
        list.AddFirst(items[0]);
        for (const char* name = row.leaving; *name != '\0'; ++name) {
            deleted.clear();
            delete items[*name - 'a'];
            EXPECT_EQ(deleted, std::string(1, *name) + '!') << row.leaving;
        }
        EXPECT_EQ(Names(list), row.left) << row.leaving;
        EXPECT_EQ(list.CountNodes(), 4 - std::strlen(row.leaving)) << row.leaving;
    }
}

TEST(List, OwnsItsNodes) {
    deleted.clear();
    {
        CList<CItem> list;
        auto* last = new CItem('c');
        list.AddLast(new CItem('a', last)); // its destructor deletes another of the list
        list.AddLast(new CItem('b'));
        list.AddLast(last);
        EXPECT_TRUE(Raised<CInternalError>([&] { list.AddLast(last); })) << "in a list already";
        EXPECT_TRUE(Raised<CInternalError>([&] { list.AddFirst(nullptr); }));
        last->Unlink();
        last->Unlink();
        list.AddFirst(last);
        EXPECT_EQ(Names(list), "cab|bac");
        last->Unlink();
        list.AddLast(last);
    }
    EXPECT_EQ(deleted, "ac!b") << "off the list first, but for the one that another took along";
}

TEST(Tree, BranchesGoWithWhatIsBelow) {
    deleted.clear();
    CBranch root('r');
    auto* a = new CBranch('a');
    auto* b = new CBranch('b');
    auto* c = new CBranch('c');
    root.AddLast(a);
    root.AddLast(b);
    a->AddLast(c);
    EXPECT_EQ(root.GetParent(), nullptr);
    EXPECT_EQ(c->GetParent(), a);
    EXPECT_EQ(b->GetParent(), &root);
    delete a;
    EXPECT_EQ(deleted, "ac");
    EXPECT_EQ(root.First, b);
    EXPECT_EQ(&*root.GetChildren().begin(), b);
}
