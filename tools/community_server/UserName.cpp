#include "tools/community_server/UserName.h"

#include "platform/Utf8.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uspoof.h>

#include <algorithm>
#include <stdexcept>

namespace community_server {

namespace {

constexpr int kShortest = 3;
constexpr int kLongest = 32;
/// More than any name of 32 characters takes.
constexpr std::size_t kMostBytes = 512;

void check(UErrorCode status)
{
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
}

icu::UnicodeString normalized(const icu::Normalizer2* (*form)(UErrorCode&), const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString result = form(status)->normalize(text, status);
    check(status);
    return result;
}

icu::UnicodeString folded(const icu::UnicodeString& text)
{
    return normalized(icu::Normalizer2::getNFKCCasefoldInstance, text);
}

/// The same for texts that look alike, in either case.
icu::UnicodeString skeletonOf(const icu::UnicodeString& text)
{
    static const auto* checker = [] {
        UErrorCode status = U_ZERO_ERROR;
        USpoofChecker* opened = uspoof_open(&status);
        check(status);
        return opened;
    }();
    icu::UnicodeString skeleton = text;
    // Twice, since a capital letter may look like what its small one does not.
    for (int i = 0; i < 2; ++i) {
        UErrorCode status = U_ZERO_ERROR;
        icu::UnicodeString once;
        uspoof_getSkeletonUnicodeString(checker, 0, skeleton, once, &status);
        check(status);
        skeleton = folded(once);
    }
    // A capital I looks like a small l, its small letter does not, and names are the same in either case.
    skeleton.findAndReplace(u"i", u"l");
    return skeleton.findAndReplace(u"vv", u"w");
}

bool isSeen(UChar32 point)
{
    constexpr UChar32 kBrailleBlank = 0x2800;
    const std::uint32_t unseen = U_GC_C_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK;
    return (U_GET_GC_MASK(point) & unseen) == 0 && !u_hasBinaryProperty(point, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) &&
           point != kBrailleBlank;
}

bool isAllSeen(const icu::UnicodeString& text)
{
    for (int i = 0; i < text.length(); i = text.moveIndex32(i, 1))
        if (!isSeen(text.char32At(i)))
            return false;
    return true;
}

/// Without blanks at the ends, and with one blank for several.
icu::UnicodeString withSingleBlanks(const icu::UnicodeString& text)
{
    icu::UnicodeString result;
    for (int i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        const UChar32 point = text.char32At(i);
        if (!u_isUWhiteSpace(point))
            result.append(point);
        else if (!result.isEmpty() && !result.endsWith(u' '))
            result.append(u' ');
    }
    return result.trim();
}

std::string utf8(const icu::UnicodeString& text)
{
    std::string bytes;
    return text.toUTF8String(bytes);
}

bool isReserved(const icu::UnicodeString& skeleton)
{
    // What clients send when nobody is logged in, and when nothing was typed.
    static const icu::UnicodeString names[] = {skeletonOf(u"NOONEHERE"), skeletonOf(u"(null)")};
    return std::find(std::begin(names), std::end(names), skeleton) != std::end(names);
}

} // namespace

std::optional<UserName> userNameIn(std::string_view bytes)
{
    if (bytes.size() > kMostBytes || !platform::isUtf8(bytes))
        return std::nullopt;
    const auto typed = icu::UnicodeString::fromUTF8({bytes.data(), static_cast<std::int32_t>(bytes.size())});
    const icu::UnicodeString shown = withSingleBlanks(normalized(icu::Normalizer2::getNFKCInstance, typed));
    const int length = shown.countChar32();
    if (!isAllSeen(typed) || !isAllSeen(shown) || length < kShortest || length > kLongest)
        return std::nullopt;
    // An accent at the start would stand on what is shown before the name.
    if ((U_GET_GC_MASK(shown.char32At(0)) & U_GC_M_MASK) != 0 || shown.indexOf(u"&plugin=") >= 0)
        return std::nullopt;
    const icu::UnicodeString skeleton = skeletonOf(shown);
    if (isReserved(skeleton))
        return std::nullopt;
    return UserName{utf8(shown), utf8(folded(shown)), utf8(skeleton)};
}

} // namespace community_server
