/* codepage_tables: complete WideCharToMultiByte / MultiByteToWideChar tables
 * (flags 0) for one ANSI code page, or a list of malformed-input cases for
 * UTF-8.  The output is raw and large (one line per code unit / byte pair);
 * cp_compact.py turns it into the run-length encoded golden files.
 *
 *   codepage_tables.exe <cp> [-h]     raw tables for code page <cp>
 *   codepage_tables.exe utf8 [-h]     the UTF-8 case list (final format)
 *
 * Raw lines (TAB separated, hex upper-case, byte strings as two digits per
 * byte, UTF-16 strings as four digits per unit, "-" for an empty string):
 *   cpinfo  MaxCharSize|DefaultChar|LeadByte|UnicodeDefaultChar|CodePageName  value
 *   w2m   unit      ret  bytes  usedDefault   one UTF-16 unit, 0000..FFFF
 *   m2w1  byte      ret  units  strict        one byte, 00..FF
 *   m2w2  lead+T    ret  units  strict        every lead byte x every trail
 *   m2w3  lead+T+41 ret  units                the same followed by 'A'
 *   seqm  bytes     ret  units                fixed-seed random byte strings
 *   seqw  units     ret  bytes  usedDefault   surrogate pairs, then random
 *                                             UTF-16 strings
 * ret is the function's return value, or err=N (GetLastError) when it is 0.
 * strict is the return value of the same MultiByteToWideChar call with
 * MB_ERR_INVALID_CHARS instead of 0, so a reader can tell which inputs
 * Windows itself considers well-formed.
 */
#include "oracle.h"
#include <stdlib.h>

/* The tables are ~1M lines; a large stdio buffer keeps the Wine console
 * round trips down. */
static char outbuf[1 << 20];

static void put_bytes(const unsigned char *b, int n)
{
    int i;
    if (n <= 0) {
        putchar('-');
        return;
    }
    for (i = 0; i < n; i++)
        printf("%02X", b[i]);
}

static void put_units(const WCHAR *w, int n)
{
    int i;
    if (n <= 0) {
        putchar('-');
        return;
    }
    for (i = 0; i < n; i++)
        printf("%04X", (unsigned)w[i]);
}

static void put_ret(int ret)
{
    if (ret > 0)
        printf("%d", ret);
    else
        printf("err=%lu", (unsigned long)GetLastError());
}

/* MultiByteToWideChar(cp, flags, in, n, out, 8) and its printed result.
 * An output buffer of 8 units is far more than one or two input bytes can
 * produce; the random strings use a larger one. */
static int m2w(UINT cp, DWORD flags, const unsigned char *in, int n,
               WCHAR *out, int cap)
{
    int i;
    for (i = 0; i < cap; i++)
        out[i] = 0xCCCC;
    SetLastError(0);
    return MultiByteToWideChar(cp, flags, (LPCSTR)in, n, out, cap);
}

static void m2w_line(UINT cp, const char *tag, const unsigned char *in, int n,
                     int with_strict)
{
    WCHAR out[64];
    int ret, strict;

    ret = m2w(cp, 0, in, n, out, 64);
    printf("%s\t", tag);
    put_bytes(in, n);
    put_tab();
    put_ret(ret);
    put_tab();
    put_units(out, ret);
    if (with_strict) {
        WCHAR tmp[64];
        strict = m2w(cp, MB_ERR_INVALID_CHARS, in, n, tmp, 64);
        put_tab();
        put_ret(strict);
    }
    put_eol();
}

/* WideCharToMultiByte(cp, 0, in, n, buf, sizeof buf, NULL, &usedDefault).
 * usedDefault starts at 7 so that a call that leaves it alone shows. */
static void w2m_line(UINT cp, const char *tag, const WCHAR *in, int n)
{
    unsigned char buf[256];
    BOOL used = 7;
    int ret;

    memset(buf, 0xCC, sizeof buf);
    SetLastError(0);
    ret = WideCharToMultiByte(cp, 0, in, n, (LPSTR)buf, sizeof buf, NULL, &used);
    printf("%s\t", tag);
    put_units(in, n);
    put_tab();
    put_ret(ret);
    put_tab();
    put_bytes(buf, ret);
    printf("\t%d\n", (int)used);
}

static unsigned rnd(unsigned n)
{
    return (unsigned)((lcg_next() >> 33) % n);
}

static int is_lead(const CPINFOEXW *ci, unsigned b)
{
    int i;
    for (i = 0; i + 1 < MAX_LEADBYTES && ci->LeadByte[i]; i += 2)
        if (b >= ci->LeadByte[i] && b <= ci->LeadByte[i + 1])
            return 1;
    return 0;
}

static void tables(UINT cp)
{
    CPINFOEXW ci;
    unsigned u, b, t;
    int i, k;
    unsigned char lead_list[256];
    int nlead = 0;

    memset(&ci, 0, sizeof ci);
    if (!GetCPInfoExW(cp, 0, &ci)) {
        printf("cpinfo\terror\t%lu\n", (unsigned long)GetLastError());
        exit(1);
    }
    printf("cpinfo\tMaxCharSize\t%u\n", (unsigned)ci.MaxCharSize);
    printf("cpinfo\tDefaultChar\t%02X%02X\n", ci.DefaultChar[0], ci.DefaultChar[1]);
    printf("cpinfo\tLeadByte\t");
    if (!ci.LeadByte[0])
        putchar('-');
    for (i = 0; i + 1 < MAX_LEADBYTES && ci.LeadByte[i]; i += 2)
        printf("%s%02X-%02X", i ? " " : "", ci.LeadByte[i], ci.LeadByte[i + 1]);
    put_eol();
    printf("cpinfo\tUnicodeDefaultChar\t%04X\n", (unsigned)ci.UnicodeDefaultChar);
    printf("cpinfo\tCodePageName\t");
    put_w(ci.CodePageName);
    put_eol();

    for (u = 0; u <= 0xFFFF; u++) {
        WCHAR w = (WCHAR)u;
        w2m_line(cp, "w2m", &w, 1);
    }

    for (b = 0; b <= 0xFF; b++) {
        unsigned char in = (unsigned char)b;
        m2w_line(cp, "m2w1", &in, 1, 1);
        if (is_lead(&ci, b))
            lead_list[nlead++] = (unsigned char)b;
    }

    for (i = 0; i < nlead; i++)
        for (t = 0; t <= 0xFF; t++) {
            unsigned char in[3] = { lead_list[i], (unsigned char)t, 'A' };
            m2w_line(cp, "m2w2", in, 2, 1);
            m2w_line(cp, "m2w3", in, 3, 0);
        }

    /* Random byte strings, weighted towards lead bytes, NULs and the bytes
     * right around the trail ranges, so that lead/trail interplay across
     * positions (a lead byte as the "trail" of another, a lead at the end,
     * an embedded NUL) shows up often. */
    for (k = 0; k < (nlead ? 1000 : 64); k++) {
        unsigned char in[16];
        char tag[] = "seqm";
        int n = 1 + (int)rnd(12), j;
        for (j = 0; j < n; j++) {
            unsigned r = rnd(10);
            if (nlead && r < 4)
                in[j] = lead_list[rnd((unsigned)nlead)];
            else if (r == 4)
                in[j] = (unsigned char)(rnd(4) ? 'A' + rnd(26) : 0);
            else
                in[j] = (unsigned char)rnd(256);
        }
        m2w_line(cp, tag, in, n, 0);
    }

    /* Surrogate pairs, reversed and lone surrogates in context, then
     * random UTF-16 strings. */
    {
        static const WCHAR fixed[][4] = {
            { 0xD83D, 0xDE00 }, { 0xD800, 0xDC00 }, { 0xDBFF, 0xDFFF },
            { 0xDE00, 0xD83D }, { 0xD83D, 0x0041 }, { 0x0041, 0xDE00 },
            { 0xD83D, 0xD83D, 0xDE00 },
        };
        static const int fixed_len[] = { 2, 2, 2, 2, 2, 2, 3 };
        for (k = 0; k < (int)(sizeof fixed_len / sizeof fixed_len[0]); k++)
            w2m_line(cp, "seqw", fixed[k], fixed_len[k]);
    }
    for (k = 0; k < (nlead ? 200 : 64); k++) {
        WCHAR in[16];
        int n = 1 + (int)rnd(10), j;
        for (j = 0; j < n; j++) {
            unsigned r = rnd(10);
            if (r < 3)
                in[j] = (WCHAR)(0x20 + rnd(0x5F));
            else if (r < 5)
                in[j] = (WCHAR)(0xD800 + rnd(0x800));
            else if (r < 7)
                in[j] = (WCHAR)(0x80 + rnd(0x780));
            else
                in[j] = (WCHAR)rnd(0x10000);
        }
        w2m_line(cp, "seqw", in, n);
    }
}

/* ---- UTF-8 -------------------------------------------------------------- */

static void u8_m2w(const char *cat, const unsigned char *in, int n)
{
    WCHAR out[64];
    int ret = m2w(CP_UTF8, 0, in, n, out, 64);
    printf("m2w\t%s\t", cat);
    put_bytes(in, n);
    put_tab();
    put_ret(ret);
    put_tab();
    put_units(out, ret);
    put_eol();
}

/* CP_UTF8 rejects a non-NULL lpUsedDefaultChar, so none is passed. */
static void u8_w2m(const char *cat, const WCHAR *in, int n)
{
    unsigned char buf[256];
    int ret;
    memset(buf, 0xCC, sizeof buf);
    SetLastError(0);
    ret = WideCharToMultiByte(CP_UTF8, 0, in, n, (LPSTR)buf, sizeof buf, NULL, NULL);
    printf("w2m\t%s\t", cat);
    put_units(in, n);
    put_tab();
    put_ret(ret);
    put_tab();
    put_bytes(buf, ret);
    put_eol();
}

/* Hex string "C080" -> bytes. */
static int unhex(const char *s, unsigned char *out)
{
    int n = 0;
    while (s[0] && s[1]) {
        unsigned v;
        sscanf(s, "%2x", &v);
        out[n++] = (unsigned char)v;
        s += 2;
        if (*s == ' ')
            s++;
    }
    return n;
}

static void u8_hex(const char *cat, const char *hex)
{
    unsigned char in[64];
    u8_m2w(cat, in, unhex(hex, in));
}

static void utf8_cases(void)
{
    static const char *const valid[] = {
        "00", "41", "7F", "C280", "C3A9", "DFBF", "E0A080", "E282AC", "ED9FBF",
        "EE8080", "EFBBBF", "EFBFBD", "EFBFBE", "EFBFBF", "F0908080",
        "F09F9880", "F48FBFBF", "41C3A942", "E282ACE282AC",
    };
    static const char *const overlong[] = {
        "C080", "C0AF", "C1BF", "C181", "E08080", "E080AF", "E09FBF",
        "F0808080", "F080808F", "F08FBFBF", "F880808080", "FC8080808080",
        "41C08042", "41E0808042",
    };
    static const char *const surrogate[] = {
        "EDA080", "EDADBF", "EDAE80", "EDB080", "EDBFBF",
        "EDA0BDEDB880", "EDB880EDA0BD", "41EDA08042", "EDA0",
    };
    static const char *const beyond[] = {
        "F4908080", "F4BFBFBF", "F5808080", "F6808080", "F7BFBFBF",
        "F888808080", "FB8080808080", "FC8480808080", "FDBFBFBFBFBF",
        "FE", "FF", "FEFF", "FFFE", "41F590808042",
    };
    static const char *const truncated[] = {
        "C3", "E2", "E282", "F0", "F09F", "F09F98",
        "C341", "E241", "E28241", "F041", "F09F41", "F09F9841",
        "41C3", "41E282", "41F09F98",
        "E282C3A9", "F09F98E282AC", "C3C3A9", "E2E282AC", "F0F09F9880",
        "E282E282", "C3E282AC41", "F09F98F09F98", "EDA041", "F4908041",
        "C280C3", "E2828041", "C38080", "E282AC80", "F09F988080",
    };
    /* Inputs whose results on Windows Vista..10 are published by test
     * suites that are run on Windows; cp_check.py compares them. */
    static const char *const known[] = {
        "C000", "C0C08000", "E0C000", "E020C000", "82A082A200", "82A082A28200",
    };
    static const unsigned char seconds[] = {
        0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xFF,
    };
    static const unsigned char leads[] = {
        0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0,
        0xF1, 0xF3, 0xF4, 0xF5, 0xF7, 0xF8, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF,
    };
    size_t i, j;
    unsigned b;
    int k;

    for (b = 0; b <= 0xFF; b++) {
        unsigned char in = (unsigned char)b;
        u8_m2w("byte", &in, 1);
    }
    for (i = 0; i < sizeof valid / sizeof valid[0]; i++) u8_hex("valid", valid[i]);
    for (i = 0; i < sizeof overlong / sizeof overlong[0]; i++) u8_hex("overlong", overlong[i]);
    for (i = 0; i < sizeof surrogate / sizeof surrogate[0]; i++) u8_hex("surrogate", surrogate[i]);
    for (i = 0; i < sizeof beyond / sizeof beyond[0]; i++) u8_hex("beyond", beyond[i]);
    for (i = 0; i < sizeof truncated / sizeof truncated[0]; i++) u8_hex("truncated", truncated[i]);
    for (i = 0; i < sizeof known / sizeof known[0]; i++) u8_hex("known", known[i]);

    /* Each lead byte with second bytes at the edges of the ranges that
     * decide validity, alone, then padded with one and two continuation
     * bytes, then followed by 'A'. */
    for (i = 0; i < sizeof leads; i++)
        for (j = 0; j < sizeof seconds; j++) {
            unsigned char in[5] = { leads[i], seconds[j], 0x80, 0x80, 0x41 };
            u8_m2w("lead2", in, 2);
            u8_m2w("lead3", in, 3);
            u8_m2w("lead4", in, 4);
            in[2] = 0x41;
            u8_m2w("lead2A", in, 3);
        }

    for (k = 0; k < 200; k++) {
        static const unsigned char pool[] = {
            0x41, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC2, 0xDF, 0xE0,
            0xE2, 0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xFF, 0x00,
        };
        unsigned char in[16];
        int n = 1 + (int)rnd(10), m;
        for (m = 0; m < n; m++)
            in[m] = rnd(3) ? pool[rnd(sizeof pool)] : (unsigned char)(0x80 + rnd(0x40));
        u8_m2w("random", in, n);
    }

    {
        static const WCHAR w[][4] = {
            { 0xD800 }, { 0xDBFF }, { 0xDC00 }, { 0xDFFF },
            { 0x0041, 0xD83D }, { 0xD83D, 0x0041 }, { 0xDE00, 0x0041 },
            { 0x0041, 0xDE00 }, { 0xDE00, 0xD83D }, { 0xD83D, 0xD83D },
            { 0xDE00, 0xDE00 }, { 0xD83D, 0xD83D, 0xDE00 },
            { 0xD83D, 0xDE00, 0xDE00 }, { 0xD83D, 0xDE00 }, { 0xD800, 0xDC00 },
            { 0xDBFF, 0xDFFF }, { 0x0000 }, { 0x007F }, { 0x0080 }, { 0x07FF },
            { 0x0800 }, { 0xFFFD }, { 0xFFFE }, { 0xFFFF }, { 0xFEFF },
        };
        static const char *const cat[] = {
            "lone", "lone", "lone", "lone", "lead-at-end", "lead-then-bmp",
            "trail-first", "lone-trail", "reversed", "two-leads", "two-trails",
            "lead-then-pair", "pair-then-trail", "pair", "pair", "pair",
            "bmp", "bmp", "bmp", "bmp", "bmp", "bmp", "bmp", "bmp", "bmp",
        };
        static const int len[] = {
            1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 3, 3, 2, 2, 2,
            1, 1, 1, 1, 1, 1, 1, 1, 1,
        };
        for (i = 0; i < sizeof len / sizeof len[0]; i++)
            u8_w2m(cat[i], w[i], len[i]);
    }
}

int main(int argc, char **argv)
{
    int header = argc > 2 && !strcmp(argv[2], "-h");

    oracle_init();
    setvbuf(stdout, outbuf, _IOFBF, sizeof outbuf);
    if (argc < 2) {
        fprintf(stderr, "usage: codepage_tables <cp>|utf8 [-h]\n");
        return 2;
    }
    if (!strcmp(argv[1], "utf8")) {
        if (header)
            printf("# utf8: MultiByteToWideChar(CP_UTF8, 0, in, n, out, 64) and\n"
                   "# WideCharToMultiByte(CP_UTF8, 0, in, n, buf, 256, NULL, NULL) under Wine\n"
                   "# columns: dir(m2w|w2m)\tcategory\tinput(hex: bytes 2 digits each, units 4 digits each)"
                   "\tret(return value, or err=N from GetLastError)\toutput(hex like input; - if empty)\n"
                   "# caution: when a lead byte announces more continuation bytes than the input has left, Wine skips\n"
                   "# to the end of the input and emits one U+FFFD, dropping the remaining bytes even if they are not\n"
                   "# continuation bytes (E241 -> FFFD, the 41 is lost; E28241 -> FFFD 0041 keeps it). Windows very\n"
                   "# likely keeps them (E020C000 -> FFFD 0020 FFFD 0000 there). Rows whose input ends like that are\n"
                   "# doubtful. The number of U+FFFD for overlong forms, encoded surrogates and values above U+10FFFF\n"
                   "# (here C080 -> 2, EDA080 -> 2, F4908080 -> 3) is not cross-checked with Windows.\n");
        utf8_cases();
    } else {
        if (header)
            printf("# codepage_tables %s: raw WideCharToMultiByte/MultiByteToWideChar results, flags 0\n", argv[1]);
        tables((UINT)atoi(argv[1]));
    }
    fflush(stdout);
    return 0;
}
