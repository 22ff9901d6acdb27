// What the leak sanitizer need not tell: the spooler's library leaks texts of descriptions in
// several languages, the C library its list of locales. Tests read messages, so it adds none.
// SPDX-License-Identifier: Apache-2.0

// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer's names for them
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_options();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libcups.so\nleak:__argz_add_sep\n";
}

extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
// NOLINTEND(bugprone-reserved-identifier)
