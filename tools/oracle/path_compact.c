/* path_compact: PathCompactPathExW(buf, path, cchMax, 0) for many path shapes
 * and every small cchMax, to pin down where the "..." goes.
 *
 * Columns: cchMax  path  ret  output
 *   cchMax  the size passed (counts the terminating NUL)
 *   path    escaped input path
 *   ret     return value (0/1)
 *   output  escaped text of buf up to its first NUL; buf is prefilled with
 *           0xCCCC, so a buffer the call did not terminate shows as
 *           <unterminated> instead
 *
 * Pass "-h" to print the header comment first.
 */
#include "oracle.h"
#include <shlwapi.h>

/* The documented buffer is MAX_PATH+1 = 261 wide chars.  The backing store
 * is larger because cchMax values above 261 are probed too, and a path that
 * fits would otherwise be copied past the end of the array. */
#define BUF_CHARS 1024

static const WCHAR *const paths[] = {
    L"C:\\Program Files\\Engineering Suite\\Projects\\2026\\Bridge Design\\calculation_results.xlsx",
    L"C:\\file.txt",
    L"C:\\",
    L"C:",
    L"C:\\Windows",
    L"C:\\Windows\\",
    L"C:\\Windows\\System32\\drivers\\etc\\hosts",
    L"C:\\a\\b\\c\\d\\e\\f\\g\\h\\i\\j\\k\\l\\m\\n\\o\\p.txt",
    L"D:\\Data\\Reports\\Quarterly\\",
    L"C:\\Users\\Public\\Documents\\an_extremely_long_file_name_that_keeps_going_and_going_on.dat",
    L"C:\\averyveryverylongdirectorynamewithoutanybreaks\\x.y",
    L"C:\\Program Files (x86)\\Common Files\\My App\\Settings File.ini",
    L"C:\\dir.with.dots\\sub.dir\\name.tar.gz",
    L"C:\\dir.with.dots\\sub.dir\\noextension",
    L"\\\\server\\share\\folder\\subfolder\\file.ini",
    L"\\\\server\\share\\file.ini",
    L"\\\\server\\share",
    L"\\\\server\\share\\",
    L"\\\\?\\C:\\very\\long\\prefixed\\path\\to\\some\\file.txt",
    L"/opt/app/data/file.txt",
    L"/home/user/a/very/long/path/name.txt",
    L"/",
    L"/etc/",
    L"/usr/local/share/applications/some-application-with-a-long-name.desktop",
    L"C:/forward/slashes/only/file.txt",
    L"C:\\mixed/separators\\in/one\\path.txt",
    L"C:\\mixed\\separators/last/is/forward.txt",
    L"relative\\path\\to\\file.txt",
    L"..\\..\\up\\two\\levels\\file.txt",
    L".\\here\\file.txt",
    L"nobackslash_just_a_long_file_name_without_any_separator.txt",
    L"short",
    L"",
    L"C:\\path with spaces\\and more spaces\\file name with spaces.txt",
    L"C:\\trailing\\spaces \\file .txt ",
    L"C:\\Users\\J\u00FCrgen\\Dokumente\\\u00DCbersicht \u00E4\u00F6\u00FC\u00DF.docx",
    L"C:\\\u30C7\u30FC\u30BF\\\u30D5\u30A9\u30EB\u30C0\\\u30D5\u30A1\u30A4\u30EB\u540D.txt",
    L"C:\\emoji\\\xD83D\xDE00\xD83D\xDE01\xD83D\xDE02\\smile\xD83D\xDE03.png",
    L"C:\\x\\\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9.txt",
    L"C:\\dir\\.hidden",
    L"C:\\dir\\...",
    L"C:\\\\double\\\\backslashes\\\\file.txt",
};

static void probe(const WCHAR *path, UINT cch)
{
    WCHAR buf[BUF_CHARS];
    size_t i, n = BUF_CHARS;
    BOOL ret;

    for (i = 0; i < BUF_CHARS; i++)
        buf[i] = 0xCCCC;
    ret = PathCompactPathExW(buf, path, cch, 0);
    for (i = 0; i < BUF_CHARS; i++)
        if (buf[i] == 0) {
            n = i;
            break;
        }
    printf("%u\t", cch);
    put_w(path);
    printf("\t%d\t", ret ? 1 : 0);
    if (n == BUF_CHARS)
        fputs("<unterminated>", stdout);
    else
        put_wn(buf, n);
    put_eol();
}

int main(int argc, char **argv)
{
    static const UINT big[] = { 100, 200, 259, 260, 261, 300 };
    WCHAR longpath[400];
    size_t i, j;
    UINT cch;

    oracle_init();
    if (argc > 1 && !strcmp(argv[1], "-h"))
        printf("# path_compact: PathCompactPathExW(buf /*prefilled 0xCCCC*/, path, cchMax, 0) under Wine, locale 1033\n"
               "# columns: cchMax\tpath(escaped)\tret(0/1)\toutput(escaped, up to the first NUL; <unterminated> if none)\n"
               "# caution (Wine-only, not checked on Windows): a path is returned whole only when cchMax >= length+2, one more than it\n"
               "#  needs; cchMax 0 and 1 still write an empty string; surrogate pairs can be cut in half.\n");

    /* A path longer than MAX_PATH: 30 directories of 9 chars plus a name
     * (292 chars). */
    wcscpy(longpath, L"C:");
    for (i = 0; i < 30; i++) {
        WCHAR comp[16];
        swprintf(comp, 16, L"\\dir%05u", (unsigned)i);
        wcscat(longpath, comp);
    }
    wcscat(longpath, L"\\final_file_name.txt");

    for (i = 0; i <= sizeof paths / sizeof paths[0]; i++) {
        const WCHAR *p = i < sizeof paths / sizeof paths[0] ? paths[i] : longpath;
        for (cch = 0; cch <= 70; cch++)
            probe(p, cch);
        for (j = 0; j < sizeof big / sizeof big[0]; j++)
            probe(p, big[j]);
    }
    return 0;
}
