/* format: VarFormat(&v, fmt, 0, 0, 0, &out) with the user locale of the
 * process, for numbers, strings and dates.
 *
 * Columns: locale  vartype  input  format  output
 *   locale   decimal LCID of the user locale the process ran under
 *   vartype  R8 I4 I2 CY BSTR DATE BOOL EMPTY NULL
 *   input    R8/DATE as %a, I4/I2 decimal, CY the scaled int64 (1/10000),
 *            BSTR escaped text, BOOL -1/0, EMPTY/NULL empty
 *   format   escaped format string
 *   output   escaped result; <null> for a NULL BSTR, <hr=0x........> when
 *            VarFormat failed
 *
 * Pass "-h" to print the header comment first.
 */
#include "oracle.h"
#include <limits.h>

#define N(a) (sizeof(a) / sizeof((a)[0]))

static LCID g_lcid;

static void run(const VARIANT *v, const char *vt, const WCHAR *fmt)
{
    BSTR out = NULL;
    HRESULT hr = VarFormat((LPVARIANT)v, (LPOLESTR)fmt, 0, 0, 0, &out);

    printf("%lu\t%s\t", (unsigned long)g_lcid, vt);
    switch (V_VT(v)) {
    case VT_R8:   printf("%a", V_R8(v)); break;
    case VT_DATE: printf("%a", V_DATE(v)); break;
    case VT_I4:   printf("%ld", (long)V_I4(v)); break;
    case VT_I2:   printf("%d", (int)V_I2(v)); break;
    case VT_CY:   printf("%lld", V_CY(v).int64); break;
    case VT_BOOL: printf("%d", (int)V_BOOL(v)); break;
    case VT_BSTR: put_bstr(V_BSTR(v)); break;
    default: break;
    }
    put_tab();
    put_w(fmt);
    put_tab();
    if (FAILED(hr))
        put_hr(hr);
    else
        put_bstr(out);
    put_eol();
    SysFreeString(out);
}

static void run_r8(double d, const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_R8;
    V_R8(&v) = d;
    run(&v, "R8", fmt);
}

static void run_date(double d, const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_DATE;
    V_DATE(&v) = d;
    run(&v, "DATE", fmt);
}

static void run_i4(long n, const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_I4;
    V_I4(&v) = n;
    run(&v, "I4", fmt);
}

static void run_i2(short n, const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_I2;
    V_I2(&v) = n;
    run(&v, "I2", fmt);
}

static void run_cy(long long n, const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_CY;
    V_CY(&v).int64 = n;
    run(&v, "CY", fmt);
}

static void run_bool(VARIANT_BOOL b, const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_BOOL;
    V_BOOL(&v) = b;
    run(&v, "BOOL", fmt);
}

static void run_bstr(const WCHAR *s, const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = SysAllocString(s);
    run(&v, "BSTR", fmt);
    VariantClear(&v);
}

static void run_empty(const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    run(&v, "EMPTY", fmt);
}

static void run_null(const WCHAR *fmt)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_NULL;
    run(&v, "NULL", fmt);
}

static const double r8_inputs[] = {
    0, 1, -1, 2.5, -2.5, 3.5, 0.125, -0.4, 0.4, 1234567.891, -1234567.891,
    0.000123, 1e20, 123456789012.0, 0.5, 1.005, 99.995, 1e-10,
};

static const WCHAR *const num_formats[] = {
    L"", L"0", L"#", L"0.0", L"0.00", L"#,##0.00", L"#,##0", L"0.000E+00",
    L"0.00E-00", L"##0.0E+0", L"0%", L"0.00%", L"0.00;(0.00);\"zero\"",
    L"0;-0;zero", L"#.##", L"0.##", L"00000", L"0000", L"00", L"000",
    L"$#,##0.00", L"\"abc\"0", L"0 \"units\"", L"\\x0", L"General Number",
    L"Fixed", L"Standard", L"Percent", L"Scientific", L"Yes/No",
    L"True/False", L"On/Off", L"Currency",
};

/* The shorter list used for the integer-like types. */
static const WCHAR *const int_formats[] = {
    L"", L"0", L"#", L"0.00", L"#,##0", L"#,##0.00", L"00", L"000", L"0000",
    L"00000", L"0%", L"0.00E+00", L"0;-0;zero", L"0.00;(0.00);\"zero\"",
    L"General Number", L"Fixed", L"Standard", L"Percent", L"Scientific",
    L"Yes/No", L"True/False", L"On/Off", L"Currency",
};

static const WCHAR *const bstr_inputs[] = {
    L"2.5", L"2,5", L"1,234.5", L"abc", L"", L" 12 ", L"1e3", L"&H10", L"-0.5",
};

static const WCHAR *const bstr_formats[] = {
    L"", L"0.0", L"0.00", L"#,##0.00", L"0",
};

static const WCHAR *const date_formats[] = {
    L"yyyy-mmm-dd HH:NN:SS", L"yyyy-mm-dd", L"dd/mm/yyyy", L"d-mmm-yy",
    L"mmmm d, yyyy", L"dddd", L"ddd", L"hh:nn:ss", L"h:n:s", L"hh:nn AM/PM",
    L"h:nn am/pm", L"h:nn a/p", L"AMPM", L"ttttt", L"ddddd", L"dddddd",
    L"Long Date", L"Short Date", L"Long Time", L"Medium Time", L"Short Time",
    L"General Date", L"0000", L"00", L"q", L"y", L"ww",
};

int main(int argc, char **argv)
{
    size_t i, j;
    /* Serials built from whole days plus seconds, as a caller would. */
    const double date_inputs[] = {
        46341 + (4 * 3600 + 53 * 60 + 11) / 86400.0, /* 2026-11-15 04:53:11 */
        46027,                                       /* 2026-01-05 00:00:00 */
        0.5,                                         /* 1899-12-30 12:00:00 */
        36585 + 86399 / 86400.0,                     /* 2000-02-29 23:59:59 */
        0, 1, -1.25, 45000.999999,
    };
    const long i4_inputs[] = {
        0, 1, -1, 5, 7, 42, 999, 1000, 2026, 1234567, -1234567, INT_MAX, INT_MIN,
    };
    const short i2_inputs[] = { 0, 1, -1, 5, 42, 2026, 32767, -32768 };
    const long long cy_inputs[] = {
        0, 1, 5000, -5000, 10000, -10000, 15000, 25000, -25000, 12345678912LL,
        -12345678912LL, 0x7FFFFFFFFFFFFFFFLL, (long long)0x8000000000000000ULL,
    };

    oracle_init();
    g_lcid = GetUserDefaultLCID();
    if (argc > 1 && !strcmp(argv[1], "-h"))
        printf("# format: VarFormat(&v, format, 0 /*firstDay*/, 0 /*firstWeek*/, 0, &out), LOCALE_USER_DEFAULT, under Wine\n"
               "# columns: locale(LCID)\tvartype\tinput(R8/DATE %%a, ints decimal, CY scaled int64, BSTR escaped, BOOL -1/0)\tformat(escaped)\toutput(escaped, <null> or <hr=0x........>)\n"
               "# caution, Wine-only results that look unlike Windows (not checked on Windows; do not pin them blindly):\n"
               "#  Currency in 1031 puts the symbol first (\\u{20AC}1,00; Windows uses the locale pattern, 1,00 \\u{20AC});\n"
               "#  Long Time/ttttt give an empty string for a serial with no time part (but 12:00:00 AM for serial 0);\n"
               "#  hh:nn AM/PM keeps 24-hour hours (23:59 PM) while h:nn am/pm gives 11:59 pm;\n"
               "#  0000/00 applied to a DATE print the General Date, or in 1031 the digits of a time-less short date (512026);\n"
               "#  ##0.0E+0 always keeps three integer digits (100.0E-2, 000.0E-2) instead of an exponent that is a multiple of 3;\n"
               "#  a minus sign goes after a leading literal ($-1.00, abc-1, x-1); BSTR &H10 formats as 10, not 16.\n");

    for (i = 0; i < N(r8_inputs); i++)
        for (j = 0; j < N(num_formats); j++)
            run_r8(r8_inputs[i], num_formats[j]);

    /* Zero-padded year, month and day numbers, the way date parts are
     * assembled from integers. */
    run_i4(2026, L"0000");
    run_i4(5, L"00");
    run_i4(7, L"000");
    run_i4(42, L"000");
    run_i4(999, L"000");
    run_i4(1000, L"000");

    for (i = 0; i < N(i4_inputs); i++)
        for (j = 0; j < N(int_formats); j++)
            run_i4(i4_inputs[i], int_formats[j]);
    for (i = 0; i < N(i2_inputs); i++)
        for (j = 0; j < N(int_formats); j++)
            run_i2(i2_inputs[i], int_formats[j]);
    for (i = 0; i < N(cy_inputs); i++)
        for (j = 0; j < N(int_formats); j++)
            run_cy(cy_inputs[i], int_formats[j]);
    for (j = 0; j < N(int_formats); j++) {
        run_bool(VARIANT_TRUE, int_formats[j]);
        run_bool(VARIANT_FALSE, int_formats[j]);
    }
    for (j = 0; j < N(int_formats); j++)
        run_empty(int_formats[j]);
    for (j = 0; j < N(int_formats); j++)
        run_null(int_formats[j]);
    run_null(L"yyyy-mm-dd");

    for (i = 0; i < N(bstr_inputs); i++)
        for (j = 0; j < N(bstr_formats); j++)
            run_bstr(bstr_inputs[i], bstr_formats[j]);

    for (i = 0; i < N(date_inputs); i++)
        for (j = 0; j < N(date_formats); j++)
            run_date(date_inputs[i], date_formats[j]);
    /* A plain double holding a date serial goes through the same date
     * formatting. */
    for (i = 0; i < N(date_inputs); i++)
        for (j = 0; j < N(date_formats); j++)
            run_r8(date_inputs[i], date_formats[j]);
    return 0;
}
