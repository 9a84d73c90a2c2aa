/* number_to_text: how OLE Automation turns numbers into text when no format
 * is given (VarBstrFromR8 / R4 / Cy / Date, LOCALE_USER_DEFAULT, flags 0).
 *
 * Columns: locale  func  input  output
 *   locale  decimal LCID of the user locale the process ran under
 *   func    R8 | R4 | CY | DATE
 *   input   R8/R4/DATE: the value as %a (an R4 is widened to double exactly);
 *           CY: the scaled 64-bit integer (units of 1/10000) in decimal
 *   output  the BSTR, escaped; <hr=0x........> when the call failed
 *
 * Pass "-h" to print the header comment first.
 */
#include "oracle.h"
#include <float.h>
#include <math.h>
#include <stdlib.h>

static LCID g_lcid;

static void row_start(const char *func)
{
    printf("%lu\t%s\t", (unsigned long)g_lcid, func);
}

static void finish(HRESULT hr, BSTR b)
{
    put_tab();
    if (FAILED(hr))
        put_hr(hr);
    else
        put_bstr(b);
    put_eol();
    SysFreeString(b);
}

static void do_r8(double d)
{
    BSTR b = NULL;
    HRESULT hr = VarBstrFromR8(d, LOCALE_USER_DEFAULT, 0, &b);
    row_start("R8");
    printf("%a", d);
    finish(hr, b);
}

static void do_r4(float f)
{
    BSTR b = NULL;
    HRESULT hr = VarBstrFromR4(f, LOCALE_USER_DEFAULT, 0, &b);
    row_start("R4");
    printf("%a", (double)f);
    finish(hr, b);
}

static void do_cy(long long scaled)
{
    BSTR b = NULL;
    CY cy;
    HRESULT hr;
    cy.int64 = scaled;
    hr = VarBstrFromCy(cy, LOCALE_USER_DEFAULT, 0, &b);
    row_start("CY");
    printf("%lld", scaled);
    finish(hr, b);
}

static void do_date(double d)
{
    BSTR b = NULL;
    HRESULT hr = VarBstrFromDate(d, LOCALE_USER_DEFAULT, 0, &b);
    row_start("DATE");
    printf("%a", d);
    finish(hr, b);
}

/* Hand-picked doubles: the interesting edges of 15-significant-digit
 * rounding and of the switch between plain and E notation.  Each one is
 * also run negated (see main). Literals, not strtod, so the compiler's
 * correctly rounded conversion fixes the bit patterns. */
static const double r8_base[] = {
    1, 2, 2.5, 3, 10, 100, 0.1, 0.2, 0.3, 0.1 + 0.2, 1.0 / 3, 2.0 / 3,
    0.5, 1.5, 0.05, 0.25, 0.125, 0.001, 3.14159265358979, 2.718281828459045,
    /* powers of ten */
    1e-20, 1e-19, 1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11,
    1e-10, 1e-9, 1e-8, 1e-7, 1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1,
    1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10,
    1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20,
    /* around the small-number switch */
    0.0001, 0.00009999999999999999, 0.000099999999999999, 0.00009999999999999,
    0.0000999999999999995, 0.00010000000000000001, 0.000123456, 0.00012345678901234,
    0.00001, 0.000012345, 0.0000999, 0.00099999999999999999,
    /* around the large-number switch */
    99999999999999.0, 99999999999999.99, 99999999999999.9, 99999999999999.5,
    100000000000000.0, 123456789012345.0, 999999999999999.0, 999999999999999.4,
    999999999999999.5, 999999999999999.6, 1e15 - 1, 1e15 + 1, 1234567890123456.0,
    9999999999999998.0, 123456789012345678.0,
    /* rounding up to the next power on 15 digits */
    9.999999999999999, 9.99999999999999, 9.999999999999995, 0.99999999999999999,
    0.9999999999999999, 0.999999999999999, 0.9999999999999995, 99.99999999999999,
    9.9999999999999995e-5, 9.9999999999999995e14,
    /* halves at the 15th significant digit */
    1.000000000000005, 0.1000000000000005, 1.000000000000015, 1.000000000000025,
    2.000000000000005, 1234567.890123455, 0.3333333333333335, 123456789012345.5,
    12345678901234.55, 1.00000000000005, 0.00012345678901234500, 5.000000000000005e-10,
    /* 16 and 17 significant digits */
    1.234567890123456, 1.2345678901234567, 12345678.90123456, 0.12345678901234567,
    9007199254740993.0, 9007199254740992.0, 4503599627370497.5, 1.7976931348623157e10,
    /* magnitude extremes */
    1.5e300, 1e-300, DBL_MAX, DBL_MIN, 4.9e-324, 5e-324 * 3, 2.2250738585072009e-308,
    1e308, 1e-307, 1.23456789012345e-7, 1.23456789012345e-5, 1.23456789012345e15,
    /* whole numbers and money-like values */
    42, 1234, 65535, 2147483647.0, 2147483648.0, 4294967296.0, 1234567.891, 0.005,
    99.995, 1.005, 0.015, 19.99, 100.01,
};

/* Exact ties: doubles whose binary value, written out in decimal, has
 * exactly 16 significant digits ending in 5, so the 15-digit cut falls
 * precisely halfway.  Most have an even 15th digit, where rounding half
 * away from zero and half to even give different text; 123456789012345.5
 * above and the two odd ones here are the controls.  All are exactly
 * representable, so the literals are the values. */
static const double r8_ties[] = {
    /* integer + .5 between 1e14 and 1e15 (ulp 1/64 .. 1/8) */
    678253998963290.5, 100000000000000.5, 999999999999998.5, 500000000000000.5,
    314159265358972.5, 281474976710656.5, 123456789012344.5,
    /* fewer integer digits, more binary fraction digits */
    12345678901234.25, 1234567890123.125, 123456789012.0625,
    100.0001220703125, 10.00006103515625, 1.000030517578125,
    0.5000152587890625, 0.1000518798828125, 0.0001010894775390625,
    /* in E notation: 16- and 17-digit integers, small powers of two */
    1234567890123445.0, 9007199254740985.0, 12345678901234450.0,
    1.239776611328125e-05, 2.384185791015625e-07,
    /* odd 15th digit: both rules round up */
    7.152557373046875e-07, 1.430511474609375e-06,
};

/* Ties whose neighbours one ulp below and above are probed as well: there
 * the cut is no longer a tie, and the text must go down and up. */
static const double r8_near_ties[] = {
    678253998963290.5, 12345678901234.25, 1.000030517578125,
    1234567890123445.0, 2.384185791015625e-07,
};

static const float r4_vals[] = {
    0.0f, 1.0f, 2.5f, 0.5f, 1.5f, 0.1f, 0.2f, 0.3f, 0.05f,
    1.0f / 3, 2.0f / 3, 3.14159265f, 1234.5678f, 123456.7f, 1234567.0f,
    9999999.0f, 1e7f, 12345678.0f, 16777216.0f, 16777217.0f, 33554432.0f,
    99999995.0f, 1e6f, 1e8f, 1e10f, 1e38f, FLT_MAX, FLT_MIN, 1e-45f,
    1e-4f, 1e-5f, 0.0001f, 0.000099999f, 1e-10f, 1e-38f, 9.9999999f,
    0.99999999f, 9.999999f, 0.9999999f, 999999.94f, 1.0000005f, 123.456f,
    100.0f, 42.0f,
};

static const long long cy_vals[] = {
    0, 1, 5, 10, 100, 1000, 5000, 10000, 15000, 25000, 12345678, 99999,
    10000000, 123456789012345678LL, 922337203685477LL,
    0x7FFFFFFFFFFFFFFFLL, (long long)0x8000000000000000ULL,
};

int main(int argc, char **argv)
{
    size_t i;
    int k;

    oracle_init();
    g_lcid = GetUserDefaultLCID();
    if (argc > 1 && !strcmp(argv[1], "-h"))
        printf("# number_to_text: VarBstrFromR8/R4/Cy/Date(value, LOCALE_USER_DEFAULT, 0) under Wine\n"
               "# columns: locale(LCID)\tfunc(R8|R4|CY|DATE)\tinput(%%a, CY scaled int64)\toutput(escaped BSTR or <hr=0x........>)\n"
               "# caution (Wine-only, not checked on Windows): the plain/E-notation switch points; -0 prints as 0;\n"
               "#  a DATE whose time rounds up to midnight keeps the old day's date part (0.99999999 -> 12:00:00 AM, 1.99999999 -> 1/1/1900 12:00:00 AM).\n");

    do_r8(0.0);
    do_r8(-0.0);
    for (i = 0; i < sizeof r8_base / sizeof r8_base[0]; i++) {
        do_r8(r8_base[i]);
        do_r8(-r8_base[i]);
    }

    /* Random mantissas over 1e-30..1e30: catches rounding cases nobody
     * thought of. */
    for (k = 0; k < 300; k++) {
        unsigned long long r = lcg_next();
        double m = 1.0 + 9.0 * (double)(r >> 11) / 9007199254740992.0;
        int e = (int)((lcg_next() >> 33) % 61) - 30;
        double d = m * pow(10.0, e);
        if (lcg_next() >> 63)
            d = -d;
        do_r8(d);
    }
    /* Short decimals (1 to 17 digits, shifted): values whose text is
     * short, where trailing-zero stripping and the 15-digit cut meet. */
    for (k = 0; k < 120; k++) {
        int digits = 1 + (int)((lcg_next() >> 33) % 17);
        int shift = (int)((lcg_next() >> 33) % 21);
        unsigned long long lim = 1, n;
        int j;
        for (j = 0; j < digits; j++)
            lim *= 10;
        n = (lcg_next() >> 4) % lim;
        do_r8((double)n / pow(10.0, shift));
    }

    for (i = 0; i < sizeof r4_vals / sizeof r4_vals[0]; i++) {
        do_r4(r4_vals[i]);
        if (r4_vals[i] != 0.0f && (i % 2 == 0))
            do_r4(-r4_vals[i]);
    }
    do_r4(-0.0f);

    for (i = 0; i < sizeof cy_vals / sizeof cy_vals[0]; i++) {
        do_cy(cy_vals[i]);
        if (cy_vals[i] > 0 && cy_vals[i] != 0x7FFFFFFFFFFFFFFFLL)
            do_cy(-cy_vals[i]);
    }

    {
        /* 2026-11-15 04:53:11 and friends, built from whole days plus
         * seconds so the serials are the ones a caller would compute. */
        const double t045311 = (4 * 3600 + 53 * 60 + 11) / 86400.0;
        const double dates[] = {
            0, 1, 0.5, -1, -1.5, -0.5, -0.25, 2, 45976.2036, 46341 + t045311,
            46027, 36526, 36585 + 86399 / 86400.0, 2958465.99999, 2958465,
            2958465 + 86399 / 86400.0, 2958466, -657434, -657434.5, -657435,
            0.99999999, 0.999999, 0.99999421, 0.9999942, 1.99999999,
            -1.99999999, 45000.999999, 1.0 / 86400, 0.5 / 86400, 0.49 / 86400,
            12.25, 60.75, 61, 59,
        };
        for (i = 0; i < sizeof dates / sizeof dates[0]; i++)
            do_date(dates[i]);
    }

    /* The ties come last so that adding them left every earlier line of
     * the golden file where it was. */
    for (i = 0; i < sizeof r8_ties / sizeof r8_ties[0]; i++) {
        do_r8(r8_ties[i]);
        do_r8(-r8_ties[i]);
    }
    for (i = 0; i < sizeof r8_near_ties / sizeof r8_near_ties[0]; i++) {
        double below = nextafter(r8_near_ties[i], 0.0);
        double above = nextafter(r8_near_ties[i], INFINITY);
        do_r8(below);
        do_r8(-below);
        do_r8(above);
        do_r8(-above);
    }
    return 0;
}
