#include "panel/CopiedSlots.h"

#include "mapping/ParameterOrder.h"
#include "platform/plist/PropertyList.h"

#include <algorithm>

namespace panel {

namespace plist = platform::plist;

namespace {

constexpr char kSource[] = "Source";
constexpr char kArePages[] = "ArePages";
constexpr char kSlots[] = "Slots";

template <typename T>
const T* valueIn(const plist::Dictionary& dictionary, const char* key)
{
    const plist::Value* value = dictionary.find(key);
    return value ? std::get_if<T>(&value->held) : nullptr;
}

} // namespace

CopiedSlots copySlots(const Entries& entries, std::span<const std::int32_t> positions)
{
    CopiedSlots copied;
    for (const std::int32_t position : positions)
        copied.contents.push_back(contentOf(entries.at(static_cast<std::size_t>(position))));
    return copied;
}

std::string bytesOf(const CopiedSlots& copied)
{
    plist::Array slots;
    for (const SlotContent& content : copied.contents) {
        platform::Record entry = mapping::emptyEntry(0, 0);
        setContent(entry, content);
        slots.emplace_back(mapping::elementFromEntry(entry));
    }
    return plist::write({plist::Dictionary{{kSource, copied.source}, {kArePages, copied.arePages}, {kSlots, slots}}});
}

std::string textOf(const Entries& entries, std::span<const std::int32_t> positions)
{
    std::string text;
    for (const std::int32_t position : positions) {
        const platform::Record& entry = entries.at(static_cast<std::size_t>(position));
        std::string content =
            mapping::isEmptyEntry(entry) ? std::string(mapping::kEmptyName) : mapping::elementFromEntry(entry);
        std::replace_if(
            content.begin(), content.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
        text += text.empty() ? "" : "\n";
        text += "Page " + std::to_string(position / mapping::kPotsPerPage + 1);
        text += ", Pot " + std::to_string(position % mapping::kPotsPerPage + 1) + ": " + content;
    }
    return text;
}

std::optional<CopiedSlots> copiedSlotsIn(std::string_view bytes)
{
    const auto document = plist::parse(bytes);
    const plist::Dictionary* root = document ? document->root.asDictionary() : nullptr;
    if (!root)
        return std::nullopt;
    const auto* source = valueIn<std::string>(*root, kSource);
    const auto* arePages = valueIn<bool>(*root, kArePages);
    const auto* slots = valueIn<plist::Array>(*root, kSlots);
    if (!source || !arePages || !slots || slots->empty() || slots->size() > CopiedSlots::kMost ||
        (*arePages && slots->size() % mapping::kPotsPerPage != 0))
        return std::nullopt;
    CopiedSlots copied{*source, *arePages, {}};
    for (const plist::Value& slot : *slots) {
        const std::string* element = slot.asString();
        if (!element)
            return std::nullopt;
        const platform::Record entry = mapping::entryFromElement(*element, 0, 0);
        copied.contents.push_back(contentOf(mapping::isEmptyEntry(entry) ? mapping::emptyEntry(0, 0) : entry));
    }
    return copied;
}

} // namespace panel
