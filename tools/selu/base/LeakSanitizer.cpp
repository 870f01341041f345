// For builds with the address sanitizer: fontconfig keeps its fonts to the end of the process.

// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer looks for these names
extern "C" char const* __lsan_default_suppressions();
extern "C" char const* __lsan_default_options();

char const* __lsan_default_suppressions() { return "leak:libfontconfig\nleak:libcairo\n"; }
// What was suppressed would be told on standard error.
char const* __lsan_default_options() { return "print_suppressions=0"; }
// NOLINTEND(bugprone-reserved-identifier)
