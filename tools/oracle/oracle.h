/* Shared helpers for the Windows oracle probes.
 *
 * Every probe prints one record per line, fields separated by a single TAB,
 * LF line ends, ASCII only.  Text is escaped so that the golden files can be
 * read back without any knowledge of Windows code pages:
 *   \\ \t \n \r \0  for the obvious characters, and
 *   \u{HHHH}        for every other UTF-16 code unit outside 0x20..0x7E
 *                   (surrogates are written unit by unit, never combined).
 * Doubles are written with %a so that the exact bit pattern survives the
 * round trip through strtod; that is why the probes are built with
 * __USE_MINGW_ANSI_STDIO=1 (msvcrt's printf has no usable %a).
 */
#ifndef ORACLE_H
#define ORACLE_H

#ifndef __USE_MINGW_ANSI_STDIO
#define __USE_MINGW_ANSI_STDIO 1
#endif

#include <windows.h>
#include <oleauto.h>
#include <stdio.h>
#include <string.h>
#include <fcntl.h>
#include <io.h>

/* msvcrt would turn every "\n" into CRLF on a text-mode stdout; the golden
 * files are LF-only, so switch stdout to binary before printing anything. */
static inline void oracle_init(void)
{
    _setmode(_fileno(stdout), _O_BINARY);
}

static inline void put_wn(const WCHAR *s, size_t n)
{
    size_t i;
    for (i = 0; i < n; i++) {
        WCHAR c = s[i];
        switch (c) {
        case L'\\': fputs("\\\\", stdout); break;
        case L'\t': fputs("\\t", stdout); break;
        case L'\n': fputs("\\n", stdout); break;
        case L'\r': fputs("\\r", stdout); break;
        case 0:     fputs("\\0", stdout); break;
        default:
            if (c >= 0x20 && c <= 0x7E)
                putchar((int)c);
            else
                printf("\\u{%04X}", (unsigned)c);
        }
    }
}

/* NUL-terminated wide string. */
static inline void put_w(const WCHAR *s)
{
    put_wn(s, wcslen(s));
}

/* A BSTR result: its full length (embedded NULs included), or <null>. */
static inline void put_bstr(BSTR b)
{
    if (!b)
        fputs("<null>", stdout);
    else
        put_wn(b, SysStringLen(b));
}

static inline void put_hr(HRESULT hr)
{
    printf("<hr=0x%08X>", (unsigned)hr);
}

static inline void put_tab(void) { putchar('\t'); }
static inline void put_eol(void) { putchar('\n'); }

/* Fixed-seed 64-bit LCG (Knuth's MMIX constants): the pseudo-random inputs
 * must be the same on every run so that the golden files are reproducible. */
static unsigned long long lcg_state = 0x0123456789ABCDEFULL;
static inline unsigned long long lcg_next(void)
{
    lcg_state = lcg_state * 6364136223846793005ULL + 1442695040888963407ULL;
    return lcg_state;
}

#endif
