// Leaks that the leak sanitizer ignores: the CUPS library leaks texts of PPDs in several languages,
// the C library its list of locales. Tests compare messages, so nothing may be reported there.
// SPDX-License-Identifier: Apache-2.0

// NOLINTBEGIN(bugprone-reserved-identifier): names defined by the sanitizer
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_options();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libcups.so\nleak:argz_add_sep\n";
}

extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
// NOLINTEND(bugprone-reserved-identifier)
