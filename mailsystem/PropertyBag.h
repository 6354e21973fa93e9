// The properties of an object: numbers, Booleans, wide texts and bytes, each under its tag.
#pragma once

#include "mailsystem/ExtendedBase.h"
#include <map>
#include <string>

namespace MailSystem {

class PropertyBag {
public:
    /// Replaces what has the tag. For types that it doesn't keep: MAPI_E_NO_SUPPORT.
    std::int32_t Set(const Mapi::SPropValue& property);
    void SetNumber(std::uint32_t tag, std::uint32_t number);
    void SetText(std::uint32_t tag, std::u16string text);
    void SetBytes(std::uint32_t tag, std::string bytes);

    /// The text in UTF-8; empty if there is none.
    std::string Text(std::uint32_t tag) const;

    /// The tags' values in one block of AllocateBuffer, in the order of the tags; an error in place of each that is
    /// missing, and a warning as the result then.
    std::int32_t Get(const Mapi::SPropTagArray& tags, Mapi::SPropValue** result) const;

private:
    struct Value {
        std::uint32_t number = 0;
        std::u16string text;
        std::string bytes;
    };
    std::map<std::uint32_t, Value> values;

    const Value* Find(std::uint32_t tag) const;
    static std::size_t Size(std::uint32_t tag, const Value& value);
    static void Fill(Mapi::SPropValue& property, const Value& value, char*& place);
};

/// An object whose properties can be set and asked for.
template <class TSlots>
class WithProperties : public Counted<TSlots> {
public:
    std::int32_t GetProps(Mapi::SPropTagArray* tags, std::uint32_t, std::uint32_t* count,
                          Mapi::SPropValue** values) override {
        *values = nullptr;
        if (!tags) {
            return ResultNoSupport; // it would ask for all properties, which the program never does
        }
        *count = tags->cValues;
        return Guarded([&] { return properties.Get(*tags, values); });
    }
    std::int32_t SetProps(std::uint32_t count, Mapi::SPropValue* values, Mapi::SPropProblemArray** problems) override {
        if (problems) {
            *problems = nullptr;
        }
        return Guarded([&] {
            std::int32_t result = Platform::SOk;
            for (std::uint32_t i = 0; i < count && result >= 0; ++i) {
                result = Set(values[i]);
            }
            return result;
        });
    }

protected:
    PropertyBag properties;

    /// For an object that keeps a property elsewhere.
    virtual std::int32_t Set(const Mapi::SPropValue& property) { return properties.Set(property); }
};

} // namespace MailSystem
