// A mark behind a static object: told of when construction passes it on the way up and destruction on the way down. The
// build includes this before statics.cpp, whose macro it fills.
#pragma once

void StaticBuilt(const char* name);
void StaticDestroyed(const char* name);

class CStaticMark {
public:
    explicit CStaticMark(const char* objectName) : name(objectName) { StaticBuilt(name); }
    ~CStaticMark() { StaticDestroyed(name); }
    CStaticMark(const CStaticMark&) = delete;
    CStaticMark& operator=(const CStaticMark&) = delete;

private:
    const char* name;
};

#define TSX_MARK(name) TSX_STATIC static const CStaticMark Mark##name(#name);
