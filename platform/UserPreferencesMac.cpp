#include "platform/UserPreferences.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace platform {

namespace {

struct Release {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

template <typename Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Release>;

Owned<CFStringRef> toCf(std::string_view text)
{
    return Owned<CFStringRef>(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                                      static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

std::string fromCf(CFStringRef text)
{
    const CFRange whole = CFRangeMake(0, CFStringGetLength(text));
    CFIndex size = 0;
    CFStringGetBytes(text, whole, kCFStringEncodingUTF8, '?', false, nullptr, 0, &size);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    CFStringGetBytes(text, whole, kCFStringEncodingUTF8, '?', false, reinterpret_cast<UInt8*>(bytes.data()), size,
                     nullptr);
    return bytes;
}

} // namespace

UserPreferences::UserPreferences(std::string bundleIdentifier) : bundleIdentifier_(std::move(bundleIdentifier)) {}

std::optional<std::string> UserPreferences::text(std::string_view key) const
{
    const Owned<CFPropertyListRef> value(CFPreferencesCopyAppValue(toCf(key).get(), toCf(bundleIdentifier_).get()));
    if (!value || CFGetTypeID(value.get()) != CFStringGetTypeID())
        return std::nullopt;
    return fromCf(static_cast<CFStringRef>(value.get()));
}

void UserPreferences::setTexts(const std::vector<Entry>& entries)
{
    const auto domain = toCf(bundleIdentifier_);
    for (const auto& [key, text] : entries)
        CFPreferencesSetAppValue(toCf(key).get(), toCf(text).get(), domain.get());
    CFPreferencesAppSynchronize(domain.get());
}

} // namespace platform
