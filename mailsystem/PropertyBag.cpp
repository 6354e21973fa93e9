#include "mailsystem/PropertyBag.h"

#include "platform/linux/text/nativetext.h"
#include <cstring>

using namespace Mapi;

namespace MailSystem {

namespace {

constexpr std::uint32_t TypeLong = 3;       // PT_LONG
constexpr std::uint32_t TypeBoolean = 0x0B; // PT_BOOLEAN
constexpr std::uint32_t TypeText = 0x1F;    // PT_UNICODE
constexpr std::uint32_t TypeBytes = 0x102;  // PT_BINARY

// Values begin at even offsets, as UTF-16 text must.
std::size_t Even(std::size_t size) {
    return (size + 1) / 2 * 2;
}

} // namespace

std::int32_t PropertyBag::Set(const SPropValue& property) {
    const std::uint32_t tag = property.ulPropTag;
    switch (tag & PropertyTypeMask) {
    case TypeLong:
        SetNumber(tag, property.Value.ul);
        return Platform::SOk;
    case TypeBoolean:
        SetNumber(tag, property.Value.b);
        return Platform::SOk;
    case TypeText:
        SetText(tag, property.Value.lpszW ? property.Value.lpszW : u"");
        return Platform::SOk;
    case TypeBytes: {
        const SBinary& bytes = property.Value.bin;
        SetBytes(tag, bytes.cb > 0 ? std::string(reinterpret_cast<const char*>(bytes.lpb), bytes.cb) : std::string());
        return Platform::SOk;
    }
    default:
        return ResultNoSupport;
    }
}

void PropertyBag::SetNumber(std::uint32_t tag, std::uint32_t number) {
    values[tag].number = number;
}

void PropertyBag::SetText(std::uint32_t tag, std::u16string text) {
    values[tag].text = std::move(text);
}

void PropertyBag::SetBytes(std::uint32_t tag, std::string bytes) {
    values[tag].bytes = std::move(bytes);
}

std::string PropertyBag::Text(std::uint32_t tag) const {
    const Value* value = Find(tag);
    return value ? Platform::Utf8Text(value->text) : std::string();
}

std::int32_t PropertyBag::Get(const SPropTagArray& tags, SPropValue** result) const {
    std::size_t size = tags.cValues * sizeof(SPropValue);
    for (std::uint32_t i = 0; i < tags.cValues; ++i) {
        const Value* value = Find(tags.aulPropTag[i]);
        size += value ? Size(tags.aulPropTag[i], *value) : 0;
    }
    auto* const block = AllocateBuffer<SPropValue>(size);
    char* place = reinterpret_cast<char*>(block + tags.cValues);
    bool complete = true;
    for (std::uint32_t i = 0; i < tags.cValues; ++i) {
        const std::uint32_t tag = tags.aulPropTag[i];
        block[i] = {tag, 0, {}};
        if (const Value* value = Find(tag)) {
            Fill(block[i], *value, place);
        } else {
            complete = false;
            block[i].ulPropTag = (tag & ~PropertyTypeMask) | PropertyTypeError;
            block[i].Value.err = ResultNotFound;
        }
    }
    *result = block;
    return complete ? Platform::SOk : ResultErrorsReturned;
}

const PropertyBag::Value* PropertyBag::Find(std::uint32_t tag) const {
    const auto found = values.find(tag);
    return found == values.end() ? nullptr : &found->second;
}

std::size_t PropertyBag::Size(std::uint32_t tag, const Value& value) {
    switch (tag & PropertyTypeMask) {
    case TypeText:
        return (value.text.size() + 1) * sizeof(char16_t);
    case TypeBytes:
        return Even(value.bytes.size());
    default:
        return 0;
    }
}

void PropertyBag::Fill(SPropValue& property, const Value& value, char*& place) {
    const std::size_t size = Size(property.ulPropTag, value);
    switch (property.ulPropTag & PropertyTypeMask) {
    case TypeText:
        property.Value.lpszW = static_cast<char16_t*>(std::memcpy(place, value.text.c_str(), size));
        break;
    case TypeBytes:
        property.Value.bin = {static_cast<std::uint32_t>(value.bytes.size()), reinterpret_cast<std::uint8_t*>(place)};
        value.bytes.copy(place, value.bytes.size());
        break;
    case TypeBoolean:
        property.Value.b = value.number != 0;
        break;
    default:
        property.Value.ul = value.number;
    }
    place += size;
}

} // namespace MailSystem
