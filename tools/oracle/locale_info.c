/* locale_info: the locale table behind the library's locale look-ups --
 * every LCID the platform enumerates, with the GetLocaleInfoW values the
 * library reads (and the two GetLocaleInfoA values it reads in the A form),
 * plus what the process-wide defaults are under a given user locale.
 *
 * Every record has four TAB-separated fields; the first one says which kind
 * of record it is:
 *   enum  LCID_INSTALLED|LCID_SUPPORTED  index  string
 *         EnumSystemLocalesW: the string handed to the callback, escaped, in
 *         enumeration order (index counts from 0).
 *   lcid  lctype  W|A  value
 *         lcid and lctype as lower-case hex (%04lx); W = GetLocaleInfoW,
 *         A = GetLocaleInfoA (which converts with the LCID's own ANSI code
 *         page, not the process's). value without its NUL; W text escaped
 *         like every probe, A bytes escaped the same way except that bytes
 *         outside 0x20..0x7E are \x{HH}. <err=N> (GetLastError) when the
 *         call returned 0.
 *   name  lctype  Ex  value
 *         GetLocaleInfoEx(name, lctype); name <null> is a NULL pointer
 *         (the user default), "" the invariant locale.
 *   process  LC_ALL  function  value
 *         only with "-p LC_ALL": GetSystemDefaultLCID, GetUserDefaultLCID
 *         and GetThreadLocale (%04lx), GetACP and GetOEMCP (decimal),
 *         GetUserDefaultLocaleName (escaped). The LC_ALL field is the
 *         command-line argument; the run script passes the value it set.
 *
 * Usage: locale_info [-h]       the table (-h: header comments first)
 *        locale_info -p LC_ALL  the process records only
 */
#include "oracle.h"
#include <stdlib.h>

#define MAX_LCIDS 4096

struct lcid_list {
    LCID id[MAX_LCIDS];
    WCHAR text[MAX_LCIDS][16];
    size_t n;
};

static struct lcid_list installed, supported;
static struct lcid_list *collecting;

static BOOL CALLBACK collect(LPWSTR s)
{
    struct lcid_list *l = collecting;
    if (l->n < MAX_LCIDS) {
        wcsncpy(l->text[l->n], s, 15);
        l->text[l->n][15] = 0;
        l->id[l->n] = (LCID)wcstoul(s, NULL, 16);
        l->n++;
    }
    return TRUE;
}

static void enumerate(struct lcid_list *l, DWORD flags, const char *name)
{
    size_t i;
    collecting = l;
    if (!EnumSystemLocalesW(collect, flags)) {
        printf("enum\t%s\t-\t<err=%lu>\n", name, (unsigned long)GetLastError());
        return;
    }
    for (i = 0; i < l->n; i++) {
        printf("enum\t%s\t%lu\t", name, (unsigned long)i);
        put_w(l->text[i]);
        put_eol();
    }
}

/* The W types, in ascending order. */
static const LCTYPE w_types[] = {
    0x01, /* ILANGUAGE */
    0x02, /* SLANGUAGE */
    0x03, /* SABBREVLANGNAME */
    0x0B, /* IDEFAULTCODEPAGE (OEM) */
    0x0C, /* SLIST */
    0x0E, /* SDECIMAL */
    0x0F, /* STHOUSAND */
    0x10, /* SGROUPING */
    0x14, /* SCURRENCY */
    0x19, /* ICURRDIGITS */
    0x1B, /* ICURRENCY */
    0x1C, /* INEGCURR */
    0x1F, /* SSHORTDATE */
    0x20, /* SLONGDATE */
    0x28, /* S1159 */
    0x29, /* S2359 */
    0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F, 0x30, /* SDAYNAME1..7 (Monday first) */
    0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, /* SABBREVDAYNAME1..7 */
    0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D,       /* SMONTHNAME1..12 */
    0x3E, 0x3F, 0x40, 0x41, 0x42, 0x43,
    0x44, 0x45, 0x46, 0x47, 0x48, 0x49,       /* SABBREVMONTHNAME1..12 */
    0x4A, 0x4B, 0x4C, 0x4D, 0x4E, 0x4F,
    0x5C, /* SNAME */
    0x1001, /* SENGLANGUAGE */
    0x1002, /* SENGCOUNTRY */
    0x1003, /* STIMEFORMAT */
    0x1004, /* IDEFAULTANSICODEPAGE */
};

/* The library reads these two through the A form. */
static const LCTYPE a_types[] = {
    0x01,   /* ILANGUAGE */
    0x1004, /* IDEFAULTANSICODEPAGE */
};

/* Bytes from an A call: the same escapes as put_wn, but a byte outside
 * 0x20..0x7E is one \x{HH} -- it is a code-page byte, not a UTF-16 unit. */
static void put_an(const char *s, size_t n)
{
    size_t i;
    for (i = 0; i < n; i++) {
        unsigned char c = (unsigned char)s[i];
        switch (c) {
        case '\\': fputs("\\\\", stdout); break;
        case '\t': fputs("\\t", stdout); break;
        case '\n': fputs("\\n", stdout); break;
        case '\r': fputs("\\r", stdout); break;
        case 0:    fputs("\\0", stdout); break;
        default:
            if (c >= 0x20 && c <= 0x7E)
                putchar((int)c);
            else
                printf("\\x{%02X}", (unsigned)c);
        }
    }
}

static void put_err(void)
{
    printf("<err=%lu>", (unsigned long)GetLastError());
}

static void do_w(LCID lcid, LCTYPE type)
{
    WCHAR buf[512];
    int n;
    SetLastError(0);
    n = GetLocaleInfoW(lcid, type, buf, 512);
    printf("%04lx\t%04lx\tW\t", (unsigned long)lcid, (unsigned long)type);
    if (n <= 0)
        put_err();
    else
        put_wn(buf, (size_t)n - 1);
    put_eol();
}

static void do_a(LCID lcid, LCTYPE type)
{
    char buf[1024];
    int n;
    SetLastError(0);
    n = GetLocaleInfoA(lcid, type, buf, 1024);
    printf("%04lx\t%04lx\tA\t", (unsigned long)lcid, (unsigned long)type);
    if (n <= 0)
        put_err();
    else
        put_an(buf, (size_t)n - 1);
    put_eol();
}

static void do_ex(const WCHAR *name, LCTYPE type)
{
    WCHAR buf[512];
    int n;
    SetLastError(0);
    n = GetLocaleInfoEx(name, type, buf, 512);
    if (name)
        put_w(name);
    else
        fputs("<null>", stdout);
    printf("\t%04lx\tEx\t", (unsigned long)type);
    if (n <= 0)
        put_err();
    else
        put_wn(buf, (size_t)n - 1);
    put_eol();
}

static int listed(const struct lcid_list *l, size_t upto, LCID id)
{
    size_t i;
    for (i = 0; i < upto; i++)
        if (l->id[i] == id)
            return 1;
    return 0;
}

static void table_for(LCID lcid)
{
    size_t j;
    for (j = 0; j < sizeof w_types / sizeof w_types[0]; j++)
        do_w(lcid, w_types[j]);
    for (j = 0; j < sizeof a_types / sizeof a_types[0]; j++)
        do_a(lcid, a_types[j]);
}

static void process_records(const char *loc)
{
    WCHAR name[LOCALE_NAME_MAX_LENGTH];
    printf("process\t%s\tGetSystemDefaultLCID\t%04lx\n", loc,
           (unsigned long)GetSystemDefaultLCID());
    printf("process\t%s\tGetUserDefaultLCID\t%04lx\n", loc,
           (unsigned long)GetUserDefaultLCID());
    printf("process\t%s\tGetThreadLocale\t%04lx\n", loc,
           (unsigned long)GetThreadLocale());
    printf("process\t%s\tGetACP\t%u\n", loc, (unsigned)GetACP());
    printf("process\t%s\tGetOEMCP\t%u\n", loc, (unsigned)GetOEMCP());
    printf("process\t%s\tGetUserDefaultLocaleName\t", loc);
    if (GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH) > 0)
        put_w(name);
    else
        put_err();
    put_eol();
}

int main(int argc, char **argv)
{
    static const WCHAR *const ex_names[] = {
        NULL, L"", L"en-US", L"de-DE", L"ja-JP", L"xx-XX",
    };
    static const LCTYPE ex_types[] = { 0x0E, 0x1004 };
    size_t i, j;

    oracle_init();
    if (argc > 2 && !strcmp(argv[1], "-p")) {
        process_records(argv[2]);
        return 0;
    }
    if (argc > 1 && !strcmp(argv[1], "-h"))
        printf("# locale_info: EnumSystemLocalesW, GetLocaleInfoW/A, GetLocaleInfoEx and the process defaults under Wine\n"
               "# records (first field says which): enum\\tLCID_INSTALLED|LCID_SUPPORTED\\tindex\\tcallback string\n"
               "#   lcid(%%04lx)\\tlctype(%%04lx)\\tW|A\\tvalue (escaped, without the NUL; A bytes outside 0x20..0x7E as \\x{HH}; <err=N> if the call failed)\n"
               "#   name(<null> = NULL, empty = L\"\" the invariant locale)\\tlctype(%%04lx)\\tEx\\tvalue (GetLocaleInfoEx; table and Ex records under LC_ALL=en_US.UTF-8)\n"
               "#   process\\tLC_ALL\\tfunction\\tvalue (LCIDs %%04lx, code pages decimal)\n"
               "# caution: Wine 8 derives this locale data from Unicode CLDR, not from Windows' NLS tables; text values (dates, names,\n"
               "#  separators) often differ from Windows 10/11. Known differences (Windows value in brackets):\n"
               "# caution: 001f SSHORTDATE: 0407 de-DE d.M.yyyy [dd.MM.yyyy], 0411 ja-JP yyyy/M/d [yyyy/MM/dd], 0c0a es-ES and 0410 it-IT\n"
               "#  d/M/yyyy [dd/MM/yyyy], 0415 pl-PL d.MM.yyyy [dd.MM.yyyy], 0412 ko-KR yyyy. M. d. [yyyy-MM-dd], 0401 ar-SA Gregorian\n"
               "#  d\\u{200F}/M\\u{200F}/yyyy [dd/MM/yy on the Hijri calendar].\n"
               "# caution: 0020 SLONGDATE: 0411 ja-JP and 0804 zh-CN yyyy\\u{5E74}M\\u{6708}d\\u{65E5}dddd [yyyy'\\u{5E74}'M'\\u{6708}'d'\\u{65E5}', quoted, no weekday],\n"
               "#  0419 ru-RU dddd, d MMMM yyyy\\u{202F}'\\u{0433}'. [d MMMM yyyy '\\u{0433}.'].\n"
               "# caution: U+202F (narrow no-break space, recent CLDR) in es-ES S1159/S2359 a.\\u{202F}m./p.\\u{202F}m. and in ru-RU/bg-BG dates is not\n"
               "#  in Windows 10 data; 0412 ko-KR S1159/S2359 AM/PM [\\u{C624}\\u{C804}/\\u{C624}\\u{D6C4}]; 0411 ja-JP SCURRENCY \\u{FFE5} [\\u{00A5}];\n"
               "#  0407 de-DE SABBREVDAYNAME Mo./Di./... [Mo/Di/..., no period].\n"
               "# caution: 1002 SENGCOUNTRY uses CLDR short names: Bosnia & Herzegovina [Bosnia and Herzegovina], Hong Kong SAR China\n"
               "#  [Hong Kong SAR], Macao SAR China [Macao SAR].\n"
               "# caution: 1004 IDEFAULTANSICODEPAGE / 000b IDEFAULTCODEPAGE: for the common locales (every LC_ALL in the process records,\n"
               "#  the Western/Central/Eastern European, Baltic, Greek, Turkish, Hebrew, Arabic, Thai, Vietnamese and CJK ones) the values\n"
               "#  agree with Windows' as far as known; 0 (with OEM 1) marks a Unicode-only locale, as on Windows (hi-IN, ka-GE, hy-AM).\n"
               "#  Not checked against Windows: locales Windows added late or rarely used (e.g. 4c09 en-AE, 043f kk-KZ, 043a mt-MT,\n"
               "#  0477 so-SO, 0430 st-ZA, 043d yi-001, 0492 ku-Arab-IQ); take those from a Windows machine before relying on them.\n"
               "# caution: the enum lists are Wine's (here INSTALLED == SUPPORTED, lower-case a-f); Windows enumerates another set\n"
               "#  in another order and its two lists differ. Use them for their format only.\n"
               "# caution: GetLocaleInfoEx(\"xx-XX\") fails with 87 here; Windows 10+ may answer for an unknown but well-formed name\n"
               "#  (it makes up a custom locale for it). Not checked.\n"
               );

    enumerate(&installed, LCID_INSTALLED, "LCID_INSTALLED");
    enumerate(&supported, LCID_SUPPORTED, "LCID_SUPPORTED");

    /* Installed LCIDs first, then whatever only the supported list has,
     * each once, in enumeration order. */
    for (i = 0; i < installed.n; i++)
        if (!listed(&installed, i, installed.id[i]))
            table_for(installed.id[i]);
    for (i = 0; i < supported.n; i++)
        if (!listed(&installed, installed.n, supported.id[i]) &&
            !listed(&supported, i, supported.id[i]))
            table_for(supported.id[i]);

    for (i = 0; i < sizeof ex_names / sizeof ex_names[0]; i++)
        for (j = 0; j < sizeof ex_types / sizeof ex_types[0]; j++)
            do_ex(ex_names[i], ex_types[j]);
    return 0;
}
