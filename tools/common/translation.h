// The texts of the tools in the user's language. A message stands whole in one literal inside
// translated(...), filled(...) or later(...), which is also how the catalogues' tools find it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_TRANSLATION_H
#define KORVEL_TOOLS_COMMON_TRANSLATION_H

#include <string>

namespace korvel {

// Takes the language from the environment; before the first text. Without it, or without a
// catalogue of that language, every text stays English. TEXTDOMAINDIR may name another folder of
// catalogues than the installed one.
void startTranslation();

__attribute__((format_arg(1))) const char* translated(const char* text);

// Marks a text that stands in a table or a constant; translated(...) looks it up where it is used.
constexpr const char* later(const char* text) { return text; }

// The translation of `format`, its places filled as printf does.
__attribute__((format(printf, 1, 2))) std::string filled(const char* format, ...);

}  // namespace korvel

#endif
