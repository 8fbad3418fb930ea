/// Orders of found regions and measured persons.
#pragma once

#include <morvale/core/export.h>
#include <morvale/core/records.h>

/// Larger area first. Equal areas have no defined order.
MORVALE_API bool cmp(info a, info b);

/// Larger skinRatio first, compared unsigned. Nothing in the library sorts with it.
MORVALE_API bool cmp_m(PersonMeta a, PersonMeta b);
