/* Which language's string a satellite library gives when the caller names none. Loads each
   library named on the command line with LoadLibraryA, as the resource manager does, and
   prints LoadStringW of each id with a 4096-character buffer. The user's locale (LC_ALL under
   Wine) takes part in the choice, so run_satellites.sh runs it under several.
   Rows: user-LCID TAB file TAB id TAB count TAB text; a failed load gives "load-failed" and
   the error in place of id and count. */
#include "oracle.h"

int main(int argc, char** argv) {
  static const unsigned ids[] = {0, 1, 15, 16, 101, 102, 103, 104, 105, 200, 201, 300, 65535};
  oracle_init();
  const unsigned long user = (unsigned long)GetUserDefaultLCID();
  for (int a = 1; a < argc; ++a) {
    HMODULE h = LoadLibraryA(argv[a]);
    if (h == NULL) {
      printf("%lu\t%s\tload-failed\t%lu\t\n", user, argv[a], (unsigned long)GetLastError());
      continue;
    }
    for (size_t i = 0; i < sizeof ids / sizeof ids[0]; ++i) {
      static WCHAR buffer[4096];
      int n = LoadStringW(h, ids[i], buffer, 4096);
      printf("%lu\t%s\t%u\t%d\t", user, argv[a], ids[i], n);
      put_wn(buffer, (size_t)(n > 0 ? n : 0));
      put_eol();
    }
    FreeLibrary(h);
  }
  return 0;
}
