// What the wide and the narrow string have in common: one pointer to a counted block, which copies share until one of
// them is written.
#pragma once

#include "foundation/inc/errorsfwd.h"
#include "foundation/inc/privateallocators.h"
#include <algorithm>
#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <string_view>

namespace Tsx {

/// A string block: a header of 12 bytes, `Length` characters and a terminating 0.
template <class TChar>
struct CStringBlock {
    std::atomic<std::int32_t> RefCount; // string objects that share the block
    std::int32_t Length;                // characters in use, terminator not counted
    std::int32_t BlockSize;             // bytes that the allocator handed out, which names their pool
    TChar Characters[1];

    static constexpr std::int32_t HeaderSize = 12;

    /// Bytes for `count` characters: 2n + 14 for the wide string, n + 13 for the narrow one.
    static constexpr std::int64_t BytesFor(std::int64_t count) {
        return HeaderSize + (count + 1) * static_cast<std::int64_t>(sizeof(TChar));
    }
};

/// The block of all empty strings. It is not counted, so that its 2 stays, and too small for any text, so that every
/// writer moves off it.
template <class TChar>
constinit inline CStringBlock<TChar> EmptyStringBlock{2, 0, sizeof(TChar), {0}};

/// Any thread may share, copy and drop strings; one string object is for one thread at a time. A block with more than
/// one owner is never written. A failed allocation raises CMemoryException and leaves the string as it was.
///
/// A null text is an empty one.
///
/// Growth: a writer that needs n characters writes in place if the block is its own and big enough. Otherwise it takes
/// a new block, of n characters if that is up to 128 bytes, and of the larger of n and the present length plus a fifth
/// beyond that.
template <class TDerived, class TChar>
class CStringBase {
    using Block = CStringBlock<TChar>;
    static_assert(offsetof(Block, Characters) == Block::HeaderSize);

public:
    CStringBase() : block(&EmptyStringBlock<TChar>) {}
    CStringBase(const TChar* text) // NOLINT(google-explicit-constructor): literals are strings
        : CStringBase(text, TextLength(text)) {}
    CStringBase(const TChar* text, std::int32_t count) : CStringBase() {
        if (count > 0) {
            block = NewBlock(count);
            std::copy_n(text, count, block->Characters);
            Finish(count);
        }
    }
    CStringBase(const CStringBase& other) : block(other.block) { Share(block); }
    CStringBase(CStringBase&& other) noexcept : block(other.block) { other.block = &EmptyStringBlock<TChar>; }
    ~CStringBase() { Release(block); }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the new reference is taken before the old one is given up
    CStringBase& operator=(const CStringBase& other) {
        Block* old = block;
        Share(other.block);
        block = other.block;
        Release(old);
        return *this;
    }
    CStringBase& operator=(CStringBase&& other) noexcept {
        std::swap(block, other.block);
        return *this;
    }

    std::int32_t Length() const { return block->Length; }
    bool IsEmpty() const { return block->Length == 0; }
    /// The terminated text, valid until the string is written or dropped.
    const TChar* Text() const { return block->Characters; }
    std::basic_string_view<TChar> View() const { return {Text(), static_cast<std::size_t>(Length())}; }
    TChar operator[](std::int32_t index) const { return block->Characters[index]; }

    /// The part of up to `count` characters from `first` on, cut to what there is; an empty part shares the empty
    /// block.
    TDerived Mid(std::int32_t first, std::int32_t count) const {
        first = std::clamp(first, 0, Length());
        count = std::clamp(count, 0, Length() - first);
        return count == Length() ? Derived() : TDerived(Text() + first, count);
    }
    TDerived Mid(std::int32_t first) const { return Mid(first, Length()); }
    TDerived Left(std::int32_t count) const { return Mid(0, count); }
    TDerived Right(std::int32_t count) const { return Mid(Length() - std::clamp(count, 0, Length()), count); }

    /// The index of a character at `from` or behind it, -1 if there is none; FindLast takes the last one of the whole
    /// string.
    std::int32_t Find(TChar c, std::int32_t from = 0) const {
        return static_cast<std::int32_t>(View().find(c, static_cast<std::size_t>(std::max(from, 0))));
    }
    std::int32_t FindLast(TChar c) const { return static_cast<std::int32_t>(View().rfind(c)); }

    /// Appends `count` characters, which may lie in this string.
    TDerived& Append(const TChar* text, std::int32_t count) {
        if (count > 0) {
            const std::int32_t length = Length();
            const bool inside = !std::less<>()(text, Text()) && !std::less<>()(Text() + length, text);
            const std::ptrdiff_t offset = inside ? text - Text() : 0;
            MakeRoom(std::int64_t{length} + count);
            std::copy_n(inside ? Text() + offset : text, count, block->Characters + length);
            Finish(length + count);
        }
        return Self();
    }
    /// One test and one write of its own: over MakeRoom and Finish, characters one by one take 1.2 to 1.3 times as
    /// long.
    TDerived& Append(TChar c) {
        Block* own = block; // a local, for the compiler must assume that writing a character may change `block`
        const std::int32_t length = own->Length;
        // In 32 bits: a block's size fits, that of one character more may not, hence the difference.
        constexpr auto overhead = static_cast<std::int32_t>(Block::BytesFor(1));
        const std::int32_t bytes = length * static_cast<std::int32_t>(sizeof(TChar));
        if (__builtin_expect(own->BlockSize - overhead < bytes || !IsPrivate(), 0)) {
            MoveToNewBlock(std::int64_t{length} + 1);
            own = block;
        }
        const TChar ending[2] = {c, 0}; // the character and the terminator in one write
        std::memcpy(own->Characters + length, ending, sizeof(ending));
        own->Length = length + 1;
        return Self();
    }
    TDerived& Append(std::basic_string_view<TChar> text) { return Append(text.data(), CheckedCount(text.size())); }
    TDerived& operator+=(const TDerived& other) { return Append(other.Text(), other.Length()); }
    TDerived& operator+=(const TChar* text) { return Append(text, TextLength(text)); }
    TDerived& operator+=(TChar c) { return Append(c); }

    /// Takes over `count` characters from a buffer that is not part of this string.
    void Assign(const TChar* buffer, std::int32_t count) {
        if (count <= 0) {
            Clear();
            return;
        }
        if (!IsPrivate() || block->BlockSize < Block::BytesFor(count)) {
            Block* fresh = NewBlock(count);
            Release(block);
            block = fresh;
        }
        std::copy_n(buffer, count, block->Characters);
        Finish(count);
    }

    /// A private block with room for `length` characters (a negative number is 0) and the terminator written there; the
    /// string's length stays until SetLength.
    TChar* GetBuffer(std::int32_t length) {
        length = std::max(length, 0);
        MakeRoom(length);
        block->Characters[length] = 0;
        return block->Characters;
    }

    /// Sets the length, a negative number being 0, and the terminator.
    void SetLength(std::int32_t length) {
        length = std::max(length, 0);
        MakeRoom(std::max(length, Length()));
        Finish(length);
    }

    void Clear() {
        Release(block);
        block = &EmptyStringBlock<TChar>;
    }

    friend bool operator==(const TDerived& a, const TDerived& b) { return a.block == b.block || a.View() == b.View(); }
    friend bool operator==(const TDerived& a, const TChar* b) { return a.View() == ViewOf(b); }
    /// By character codes, not by the order of a locale.
    friend auto operator<=>(const TDerived& a, const TDerived& b) { return a.View() <=> b.View(); }

    friend TDerived operator+(const TDerived& a, const TDerived& b) { return Concatenate(a.View(), b.View()); }
    friend TDerived operator+(const TDerived& a, const TChar* b) { return Concatenate(a.View(), ViewOf(b)); }
    friend TDerived operator+(const TChar* a, const TDerived& b) { return Concatenate(ViewOf(a), b.View()); }
    friend TDerived operator+(const TDerived& a, TChar b) { return Concatenate(a.View(), {&b, 1}); }

protected:
    Block* block;

    static std::int32_t CheckedCount(std::size_t count) {
        if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
            GenerateMemoryException();
        }
        return static_cast<std::int32_t>(count);
    }
    static std::basic_string_view<TChar> ViewOf(const TChar* text) {
        return text ? std::basic_string_view<TChar>(text) : std::basic_string_view<TChar>();
    }
    static std::int32_t TextLength(const TChar* text) { return CheckedCount(ViewOf(text).size()); }

    /// Sets the length by counting up to the terminator, which a callee has written.
    void FinishAtTerminator() { Finish(TextLength(block->Characters)); }

private:
    TDerived& Self() { return static_cast<TDerived&>(*this); }
    const TDerived& Derived() const { return static_cast<const TDerived&>(*this); }

    bool IsPrivate() const { return block->RefCount.load(std::memory_order_acquire) == 1; }

    static void Share(Block* shared) {
        if (shared != &EmptyStringBlock<TChar>) {
            shared->RefCount.fetch_add(1, std::memory_order_relaxed);
        }
    }
    // The last owner need not count down: nobody else can see the block.
    static void Release(Block* released) noexcept {
        if (released != &EmptyStringBlock<TChar> && (released->RefCount.load(std::memory_order_acquire) == 1 ||
                                                     released->RefCount.fetch_sub(1, std::memory_order_acq_rel) == 1)) {
            StringAllocator.Free(released, released->BlockSize);
        }
    }

    static Block* NewBlock(std::int64_t capacity) {
        const std::int64_t bytes = Block::BytesFor(capacity);
        if (bytes > std::numeric_limits<std::int32_t>::max()) {
            GenerateMemoryException();
        }
        std::int32_t allocated = 0;
        auto* fresh = static_cast<Block*>(StringAllocator.Alloc(static_cast<std::int32_t>(bytes), allocated));
        new (&fresh->RefCount) std::atomic<std::int32_t>(1);
        fresh->Length = 0;
        fresh->BlockSize = allocated;
        return fresh;
    }

    void MakeRoom(std::int64_t needed) {
        if (block->BlockSize < Block::BytesFor(needed) || !IsPrivate()) {
            MoveToNewBlock(needed);
        }
    }

    void MoveToNewBlock(std::int64_t needed) {
        constexpr std::int64_t largestPooledBlock = 128;
        const std::int64_t bytes = Block::BytesFor(needed);
        std::int64_t capacity = std::max<std::int64_t>(needed, Length());
        if (block->BlockSize < bytes && bytes > largestPooledBlock) {
            capacity = std::max<std::int64_t>(capacity, std::int64_t{Length()} + Length() / 5);
        }
        Block* fresh = NewBlock(capacity);
        fresh->Length = block->Length;
        std::copy_n(block->Characters, block->Length + 1, fresh->Characters);
        Release(block);
        block = fresh;
    }

    void Finish(std::int32_t length) {
        block->Length = length;
        block->Characters[length] = 0;
    }

    static TDerived Concatenate(std::basic_string_view<TChar> a, std::basic_string_view<TChar> b) {
        TDerived result;
        if (!a.empty() || !b.empty()) {
            TChar* buffer = result.GetBuffer(CheckedCount(a.size() + b.size()));
            std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), buffer));
            result.SetLength(static_cast<std::int32_t>(a.size() + b.size()));
        }
        return result;
    }
};

} // namespace Tsx
