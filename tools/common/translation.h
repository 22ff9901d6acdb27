// The texts of the tools in the user's language. Every message is one whole literal in
// translated(...), filled(...) or later(...), where po/gather finds it.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_TRANSLATION_H
#define KORVEL_TOOLS_COMMON_TRANSLATION_H

#include <string>

namespace korvel {

// Sets the language from the environment; to be called before the first text is used. Texts are in
// English until then, and when there is no catalogue of the language. The variable TEXTDOMAINDIR
// can name another folder of catalogues.
void startTranslation();

__attribute__((format_arg(1))) const char* translated(const char* text);

// Marks a text in a table or a constant; translated(...) looks it up where it is used.
constexpr const char* later(const char* text) { return text; }

// The translation of `format`, filled in as printf does.
__attribute__((format(printf, 1, 2))) std::string filled(const char* format, ...);

}  // namespace korvel

#endif
