/// The definitions that stand behind this library's own in loading order.
#pragma once

namespace morvale::record {

/// The next definition of an interposed function. Null after one line on standard error when there is none:
/// the library was not loaded behind this one.
void* next_symbol(const char* name);

/// A variable of the library, or null. Not the next definition but the first: an executable that names the
/// variable holds it itself.
void* library_variable(const char* name);

/// One line on standard error.
void say(const char* text);

}  // namespace morvale::record
