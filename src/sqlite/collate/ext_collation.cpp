// Blanks at the end never count: the shorter string is taken for one that goes on with blanks. Where ICU compares they
// are left out instead, which makes the same strings equal.
#include "collate/ext_collation.hpp"

#include "collate/ext_utf8.hpp"

#include <unicode/utf16.h>

#include <algorithm>
#include <new>
#include <utility>

// ICU fails here only where memory, or its own data, are lacking.
static void my_check(UErrorCode code)
{
    if (U_FAILURE(code))
        throw std::bad_alloc();
}

// The server tells accents by a later level than letters, and case by one later still, as ICU does.
static void my_set_strength(const ext_rules &rules, icu::Collator &icu)
{
    UErrorCode code = U_ZERO_ERROR;
    const UColAttributeValue letters = rules.nocase ? UCOL_SECONDARY : UCOL_TERTIARY;
    icu.setAttribute(UCOL_STRENGTH, rules.noaccent ? UCOL_PRIMARY : letters, code);
    icu.setAttribute(UCOL_CASE_LEVEL, rules.noaccent && !rules.nocase ? UCOL_ON : UCOL_OFF, code);
    icu.setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, code);
    icu.setAttribute(UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, code); // Thai passes over punctuation otherwise
    my_check(code);
}

std::unique_ptr<ext_collation> ext_open_collation(std::string_view name)
{
    auto collation = std::make_unique<ext_collation>();
    if (!ext_read_rules(name, collation->rules))
        return nullptr;
    const ext_order order = collation->rules.order;
    if (order == ext_order::linguistic || order == ext_order::code_page) {
        UErrorCode code = U_ZERO_ERROR;
        collation->icu.reset(icu::Collator::createInstance(collation->rules.language->locale, code));
        my_check(code);
        my_set_strength(collation->rules, *collation->icu);
    }
    return collation;
}

static bool my_is_ascii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return U8_IS_SINGLE(static_cast<uint8_t>(byte)); });
}

static std::string_view my_trimmed(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

static int my_compare_ascii(const ext_collation &collation, std::string_view left, std::string_view right)
{
    UErrorCode code = U_ZERO_ERROR;
    const int result = collation.icu->compareUTF8(my_trimmed(left), my_trimmed(right), code);
    my_check(code);
    return result;
}

static int my_compare_icu(const ext_collation &collation, const std::u16string &left, const std::u16string &right)
{
    UErrorCode code = U_ZERO_ERROR;
    const int result = collation.icu->compare(left.data(), static_cast<int32_t>(left.size()), right.data(),
                                              static_cast<int32_t>(right.size()), code);
    my_check(code);
    return result;
}

// Folding leaves ASCII as it is, so that strings of it need not be folded even when one of another kind is compared
// with both.
static int my_compare_linguistic(ext_collation &collation, std::string_view left, std::string_view right)
{
    if (my_is_ascii(left) && my_is_ascii(right))
        return my_compare_ascii(collation, left, right);
    ext_fold(left, collation.rules, collation.left);
    ext_fold(right, collation.rules, collation.right);
    const int result = my_compare_icu(collation, collation.left.text, collation.right.text);
    return result ? result : collation.left.marks.compare(collation.right.marks);
}

static int my_compare_code_page(ext_collation &collation, std::string_view left, std::string_view right)
{
    ext_fold_code_page(left, collation.rules, collation.left.text);
    ext_fold_code_page(right, collation.rules, collation.right.text);
    const int result = my_compare_icu(collation, collation.left.text, collation.right.text);
    return result ? result : collation.left.text.compare(collation.right.text);
}

// The bytes of UTF-8 have the order of the characters' numbers.
static int my_compare_bytes(std::string_view left, std::string_view right)
{
    const std::string_view longer = left.size() > right.size() ? left : right;
    const size_t common = std::min(left.size(), right.size());
    if (const int result = left.substr(0, common).compare(right.substr(0, common)))
        return result;
    const size_t end = longer.find_first_not_of(' ', common);
    if (end == std::string_view::npos)
        return 0;
    const int rest = static_cast<uint8_t>(longer[end]) > ' ' ? 1 : -1;
    return left.size() > right.size() ? rest : -rest;
}

namespace {

// The units of UTF-16 of a string, and blanks after its end.
class padded_units {
  public:
    explicit padded_units(std::string_view utf8) : utf8_(utf8)
    {
    }
    bool is_at_end() const
    {
        return at_ == utf8_.size() && trail_ == 0;
    }
    uint16_t next()
    {
        if (trail_ != 0)
            return std::exchange(trail_, static_cast<uint16_t>(0));
        if (at_ == utf8_.size())
            return u' ';
        const UChar32 c = ext_next_valid_character(utf8_, at_);
        if (!U_IS_SUPPLEMENTARY(c))
            return static_cast<uint16_t>(c);
        trail_ = U16_TRAIL(c);
        return U16_LEAD(c);
    }

  private:
    std::string_view utf8_;
    size_t at_ = 0;
    uint16_t trail_ = 0;
};

} // namespace

static int my_compare_first_letter(std::string_view left, std::string_view right)
{
    const auto swapped = [](uint16_t unit) { return static_cast<uint16_t>(unit << 8 | unit >> 8); };
    padded_units left_units(left);
    padded_units right_units(right);
    for (bool is_first = true; !left_units.is_at_end() || !right_units.is_at_end(); is_first = false) {
        const uint16_t left_unit = left_units.next();
        const uint16_t right_unit = right_units.next();
        if (left_unit != right_unit)
            return is_first ? left_unit - right_unit : swapped(left_unit) - swapped(right_unit);
    }
    return 0;
}

int ext_compare(ext_collation &collation, std::string_view left, std::string_view right)
{
    if (left == right)
        return 0;
    switch (collation.rules.order) {
    case ext_order::code_points:
        return my_compare_bytes(left, right);
    case ext_order::first_letter:
        return my_compare_first_letter(left, right);
    case ext_order::code_page:
        return my_compare_code_page(collation, left, right);
    case ext_order::linguistic:
        break;
    }
    return my_compare_linguistic(collation, left, right);
}
