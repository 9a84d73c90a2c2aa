/* locale_numbers: the GetLocaleInfoW values that number and date formatting
 * read, for a fixed set of LCIDs.
 *
 * Columns: lcid  lctype  value
 *   lcid    decimal LCID asked for
 *   lctype  the LOCALE_* constant's name
 *   value   escaped result without its NUL; <error=N> (GetLastError) when
 *           the call returned 0
 *
 * Pass "-h" to print the header comments first.
 */
#include "oracle.h"

#define T(x) { x, #x }

static const struct { LCTYPE type; const char *name; } types[] = {
    T(LOCALE_SDECIMAL), T(LOCALE_STHOUSAND), T(LOCALE_SGROUPING),
    T(LOCALE_INEGNUMBER), T(LOCALE_ILZERO), T(LOCALE_SCURRENCY),
    T(LOCALE_SABBREVMONTHNAME1), T(LOCALE_SABBREVMONTHNAME2),
    T(LOCALE_SABBREVMONTHNAME3), T(LOCALE_SABBREVMONTHNAME4),
    T(LOCALE_SABBREVMONTHNAME5), T(LOCALE_SABBREVMONTHNAME6),
    T(LOCALE_SABBREVMONTHNAME7), T(LOCALE_SABBREVMONTHNAME8),
    T(LOCALE_SABBREVMONTHNAME9), T(LOCALE_SABBREVMONTHNAME10),
    T(LOCALE_SABBREVMONTHNAME11), T(LOCALE_SABBREVMONTHNAME12),
    T(LOCALE_SMONTHNAME1), T(LOCALE_SMONTHNAME2), T(LOCALE_SMONTHNAME3),
    T(LOCALE_SMONTHNAME4), T(LOCALE_SMONTHNAME5), T(LOCALE_SMONTHNAME6),
    T(LOCALE_SMONTHNAME7), T(LOCALE_SMONTHNAME8), T(LOCALE_SMONTHNAME9),
    T(LOCALE_SMONTHNAME10), T(LOCALE_SMONTHNAME11), T(LOCALE_SMONTHNAME12),
    T(LOCALE_SDAYNAME1), T(LOCALE_SDAYNAME2), T(LOCALE_SDAYNAME3),
    T(LOCALE_SDAYNAME4), T(LOCALE_SDAYNAME5), T(LOCALE_SDAYNAME6),
    T(LOCALE_SDAYNAME7),
    T(LOCALE_SABBREVDAYNAME1), T(LOCALE_SABBREVDAYNAME2),
    T(LOCALE_SABBREVDAYNAME3), T(LOCALE_SABBREVDAYNAME4),
    T(LOCALE_SABBREVDAYNAME5), T(LOCALE_SABBREVDAYNAME6),
    T(LOCALE_SABBREVDAYNAME7),
    T(LOCALE_SSHORTDATE), T(LOCALE_SLONGDATE), T(LOCALE_STIMEFORMAT),
    T(LOCALE_S1159), T(LOCALE_S2359), T(LOCALE_IDEFAULTANSICODEPAGE),
};

static const LCID lcids[] = {
    1033, 1031, 1036, 2057, 1040, 1041, 2052, 1049, 3082, 1043,
};

int main(int argc, char **argv)
{
    size_t i, j;

    oracle_init();
    if (argc > 1 && !strcmp(argv[1], "-h"))
        printf("# locale_numbers: GetLocaleInfoW(lcid, lctype, buf, 256) under Wine\n"
               "# columns: lcid(decimal)\tlctype(LOCALE_* name)\tvalue(escaped, without the NUL; <error=N> if the call failed)\n"
               "# caution: Wine derives its locale data from Unicode CLDR, not from Windows' NLS tables; several values differ\n"
               "# from Windows 10/11 (e.g. de-DE LOCALE_SSHORTDATE is d.M.yyyy here, dd.MM.yyyy on Windows). Check before relying on one.\n");

    for (i = 0; i < sizeof lcids / sizeof lcids[0]; i++)
        for (j = 0; j < sizeof types / sizeof types[0]; j++) {
            WCHAR buf[256];
            int n = GetLocaleInfoW(lcids[i], types[j].type, buf, 256);
            printf("%lu\t%s\t", (unsigned long)lcids[i], types[j].name);
            if (n <= 0)
                printf("<error=%lu>", (unsigned long)GetLastError());
            else
                put_wn(buf, (size_t)n - 1);
            put_eol();
        }
    return 0;
}
