/// Marks what callers may see. Everything else in the library has hidden visibility.
#pragma once

#define MORVALE_API __attribute__((visibility("default")))
