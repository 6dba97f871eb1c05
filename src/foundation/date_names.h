// Month and weekday names shared by the date reader and the date formatter.
#pragma once

#include <string_view>

namespace ht::detail {

inline constexpr std::u16string_view kMonthNames[12] = {u"January",   u"February", u"March",    u"April",
                                                        u"May",       u"June",     u"July",     u"August",
                                                        u"September", u"October",  u"November", u"December"};

// Index 0 is Sunday, as in DayOfWeek - 1.
inline constexpr std::u16string_view kDayNames[7] = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                                     u"Thursday", u"Friday", u"Saturday"};

// Lower-case Russian month abbreviations; a month name is matched by its first three letters.
inline constexpr std::u16string_view kRussianMonths[12] = {u"янв", u"фев", u"мар", u"апр", u"май", u"июн",
                                                           u"июл", u"авг", u"сен", u"окт", u"ноя", u"дек"};

} // namespace ht::detail
