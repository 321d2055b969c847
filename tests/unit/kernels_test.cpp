// The numeric kernels against MPFR. Every random argument's error is measured in units in the last place of
// the exact result, and the worst one is printed; KORVANE_NUMERIC_ARGUMENTS sets how many arguments each
// function gets.
#include "numbers/kernels.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <vector>

#include "numbers/angle_reduction.h"
#include "random_bits.h"

namespace korvane {
namespace {

constexpr mpfr_prec_t precision = 96;

using test::numeric_arguments;
using Random = test::RandomBits;

// Moves a number a few representable steps away.
double nudge(double number, Random& random) {
    if (number == 0) return 0;
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(number) + random.bits() % 9 - 4);
}

// Distance between a result and the exact value in units in the last place of the latter.
class Oracle {
  public:
    Oracle() { mpfr_inits2(precision, x_, y_, exact_, difference_, nullptr); }
    ~Oracle() { mpfr_clears(x_, y_, exact_, difference_, nullptr); }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;

    using Function = int (*)(mpfr_t, const mpfr_t, mpfr_rnd_t);
    double error(Function function, double x, double result) {
        mpfr_set_d(x_, x, MPFR_RNDN);
        function(exact_, x_, MPFR_RNDN);
        return error_of(result);
    }
    double power_error(double base, double exponent, double result) {
        mpfr_set_d(x_, base, MPFR_RNDN);
        mpfr_set_d(y_, exponent, MPFR_RNDN);
        mpfr_pow(exact_, x_, y_, MPFR_RNDN);
        return error_of(result);
    }
    bool subnormal() const {
        return std::fabs(mpfr_get_d(exact_, MPFR_RNDN)) < std::numeric_limits<double>::min();
    }

  private:
    double error_of(double result) {
        const double nearest = mpfr_get_d(exact_, MPFR_RNDN);
        if (std::isinf(nearest) || std::isinf(result) || std::isnan(result))
            return nearest == result ? 0 : HUGE_VAL;
        mpfr_sub_d(difference_, exact_, result, MPFR_RNDN);
        int exponent = 0;
        std::frexp(nearest, &exponent);
        if (nearest == 0 || exponent < -1021) exponent = -1021;
        mpfr_mul_2si(difference_, difference_, 53 - exponent, MPFR_RNDN);
        return std::fabs(mpfr_get_d(difference_, MPFR_RNDN));
    }
    mpfr_t x_, y_, exact_, difference_;
};

// The worst errors over all arguments, of normal and of subnormal results.
struct Worst {
    double normal = 0;
    double subnormal = 0;
    double normal_at = 0;
    double subnormal_at = 0;

    void note(double error, bool is_subnormal, double x) {
        double& worst = is_subnormal ? subnormal : normal;
        if (!(error > worst)) return;
        worst = error;
        (is_subnormal ? subnormal_at : normal_at) = x;
    }
    void check(const char* name, long count) const {
        std::printf("%-4s worst error %.4f ulp at %.17g", name, normal, normal_at);
        if (subnormal > 0) std::printf("; of subnormal results %.4f ulp at %.17g", subnormal, subnormal_at);
        std::printf("; %ld arguments\n", count);
        // Less than 0.6 from the exact value is at most 1 from the correctly rounded one, and nearly always
        // equal to it.
        EXPECT_LT(normal, 0.6) << name << " at " << normal_at;
        EXPECT_LT(subnormal, 1.0) << name << " at " << subnormal_at;
    }
};

using Draw = double (*)(Random&);

void measure(const char* name, double (*kernel)(double), Oracle::Function function,
             const std::vector<Draw>& draws) {
    Random random(0x5EED + static_cast<std::uint64_t>(name[0]));
    Oracle oracle;
    Worst worst;
    const long count = numeric_arguments();
    for (long i = 0; i < count; i++) {
        const double x = draws[static_cast<std::size_t>(i) % draws.size()](random);
        const double error = oracle.error(function, x, kernel(x));
        worst.note(error, oracle.subnormal(), x);
    }
    worst.check(name, count);
}

double any(Random& random) {
    return random.any();
}
double near_zero(Random& random) {
    return random.between(-1, 1);
}
double some_turns(Random& random) {
    return random.between(-50, 50);
}
double many_turns(Random& random) {
    return random.between(-1e6, 1e6);
}
double near_quarter_turn(Random& random) {
    return nudge(static_cast<double>(random.bits() % 100000) * 1.5707963267948966, random);
}
// Where one row of a table ends and the next begins.
double between_rows(Random& random) {
    return nudge((static_cast<double>(random.bits() % 300) + 0.5) / 128, random);
}
// Any exponent from 2^-30 to 2^1023, so that large arguments get their share.
double large(Random& random) {
    return std::ldexp(random.between(1, 2), static_cast<int>(random.bits() % 1054) - 30);
}

const std::vector<Draw> angles = {near_zero,    some_turns, many_turns, near_quarter_turn,
                                  between_rows, large,      any};

TEST(KernelsTest, SineIsNearlyCorrectlyRounded) {
    measure("SIN", kernel_sin, mpfr_sin, angles);
}
TEST(KernelsTest, CosineIsNearlyCorrectlyRounded) {
    measure("COS", kernel_cos, mpfr_cos, angles);
}
TEST(KernelsTest, TangentIsNearlyCorrectlyRounded) {
    measure("TAN", kernel_tan, mpfr_tan, angles);
}

TEST(KernelsTest, ArctangentIsNearlyCorrectlyRounded) {
    measure("ATN", kernel_atan, mpfr_atan,
            {near_zero, some_turns, between_rows, [](Random& random) { return 1 / between_rows(random); },
             [](Random& random) { return nudge(1, random); }, large, any});
}

TEST(KernelsTest, ExponentialIsNearlyCorrectlyRounded) {
    measure("EXP", kernel_exp, mpfr_exp,
            {near_zero, some_turns, [](Random& random) { return random.between(-745, 709.78); },
             [](Random& random) { return between_rows(random) * 0.6931471805599453; },
             [](Random& random) {
                 return std::ldexp(random.between(-1, 1), -static_cast<int>(random.bits() % 60));
             },
             [](Random& random) { return random.between(-745, -707); }});
}

TEST(KernelsTest, LogarithmIsNearlyCorrectlyRounded) {
    measure("LOG", kernel_log, mpfr_log,
            {[](Random& random) { return std::fabs(random.any()); },
             [](Random& random) { return random.unit() + 0x1p-60; },
             [](Random& random) { return random.between(0.9, 1.1); },
             [](Random& random) {
                 return 1 + std::ldexp(random.between(-1, 1), -static_cast<int>(random.bits() % 52));
             },
             [](Random& random) { return random.between(1, 1e6); },
             [](Random& random) { return between_rows(random) + 1; },
             [](Random& random) { return std::ldexp(random.between(0.5, 1), -1023); }});
}

TEST(KernelsTest, SquareRootIsCorrectlyRounded) {
    Random random(7);
    Oracle oracle;
    for (int i = 0; i < 100000; i++) {
        const double x = std::fabs(random.any());
        EXPECT_LE(oracle.error(mpfr_sqrt, x, kernel_sqrt(x)), 0.5);
    }
}

TEST(KernelsTest, PowerIsNearlyCorrectlyRounded) {
    Random random(8);
    Oracle oracle;
    Worst worst;
    const long count = numeric_arguments();
    for (long i = 0; i < count; i++) {
        double base = 0;
        double exponent = 0;
        switch (i % 5) {
            case 0:  // ordinary numbers
                base = random.between(0, 100);
                exponent = random.between(-20, 20);
                break;
            case 1:  // results over the whole range
                base = std::fabs(random.any());
                exponent = random.between(-745, 710) / std::fabs(std::log(base));
                break;
            case 2:  // bases next to 1 with large exponents
                base = 1 + std::ldexp(random.between(-1, 1), -static_cast<int>(random.bits() % 52));
                exponent = random.between(-745, 710) / std::fabs(std::log(base));
                if (!std::isfinite(exponent)) exponent = 3;
                break;
            case 3:  // anything
                base = std::fabs(random.any());
                exponent = random.any();
                break;
            default:  // roots
                base = random.between(0, 1e6);
                exponent = 1.0 / static_cast<double>(random.bits() % 30 + 2);
        }
        if (base == 0) continue;
        const double error = oracle.power_error(base, exponent, kernel_pow(base, exponent));
        worst.note(error, oracle.subnormal(), base);
    }
    worst.check("^", count);
}

TEST(KernelsTest, KnownArgumentsAreExact) {
    EXPECT_EQ(kernel_sin(0), 0);
    EXPECT_EQ(kernel_cos(0), 1);
    EXPECT_EQ(kernel_tan(0), 0);
    EXPECT_EQ(kernel_atan(0), 0);
    EXPECT_EQ(kernel_exp(0), 1);
    EXPECT_EQ(kernel_log(1), 0);
    EXPECT_EQ(kernel_pow(1, 1e300), 1);
    EXPECT_EQ(kernel_pow(9, 0.5), 3);
    EXPECT_EQ(kernel_sqrt(2.25), 1.5);
}

// The rest of an angle behind whole quarter turns, which is good to about 2^-70 of its own size. Twelve
// hundred bits hold the largest angle and what is left of it.
TEST(KernelsTest, AnglesAreReducedToTheirRest) {
    constexpr mpfr_prec_t wide = 1300;
    mpfr_t angle;
    mpfr_t quarter;
    mpfr_t turns;
    mpfr_t rest;
    mpfr_inits2(wide, angle, quarter, turns, rest, nullptr);
    mpfr_const_pi(quarter, MPFR_RNDN);
    mpfr_div_2ui(quarter, quarter, 1, MPFR_RNDN);
    Random random(9);
    for (long i = 0; i < numeric_arguments() / 4; i++) {
        const Draw draw = std::vector<Draw>{some_turns, many_turns, near_quarter_turn, large}[i % 4];
        const double x = draw(random);
        if (std::fabs(x) < 0.5) continue;
        const ReducedAngle reduced = reduce_angle(x);
        mpfr_set_d(angle, x, MPFR_RNDN);
        mpfr_sub_d(rest, angle, reduced.rest.high, MPFR_RNDN);
        mpfr_sub_d(rest, rest, reduced.rest.low, MPFR_RNDN);
        mpfr_div(turns, rest, quarter, MPFR_RNDN);
        mpfr_rint(turns, turns, MPFR_RNDN);
        mpfr_fms(rest, turns, quarter, rest, MPFR_RNDN);  // by how much the rest is wrong
        const double error = std::fabs(mpfr_get_d(rest, MPFR_RNDN));
        ASSERT_LE(error, std::ldexp(std::fabs(reduced.rest.high), -69)) << x;
        ASSERT_LE(std::fabs(reduced.rest.high), 0.79) << x;
        mpfr_fmod_ui(turns, turns, 4, MPFR_RNDN);
        ASSERT_EQ(static_cast<int>(mpfr_get_d(turns, MPFR_RNDN) + 4) % 4, static_cast<int>(reduced.quadrant))
            << x;
    }
    mpfr_clears(angle, quarter, turns, rest, nullptr);
}

// The binary64 number that comes nearest to an odd multiple of pi/2 (J.-M. Muller, Elementary Functions).
TEST(KernelsTest, TheHardestAngleIsReducedExactly) {
    const double hardest = std::ldexp(6381956970095103.0, 797);
    Oracle oracle;
    EXPECT_LT(oracle.error(mpfr_cos, hardest, kernel_cos(hardest)), 0.6);
    EXPECT_LT(oracle.error(mpfr_tan, hardest, kernel_tan(hardest)), 0.6);
    EXPECT_LT(std::fabs(kernel_cos(hardest)), 1e-18);
}

TEST(KernelsTest, OutsideTheDomain) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (auto* kernel : {kernel_sin, kernel_cos, kernel_tan}) {
        EXPECT_TRUE(std::isnan(kernel(infinity)));
        EXPECT_TRUE(std::isnan(kernel(-infinity)));
        EXPECT_TRUE(std::isnan(kernel(nan)));
    }
    EXPECT_EQ(kernel_atan(infinity), 1.5707963267948966);
    EXPECT_EQ(kernel_atan(-infinity), -1.5707963267948966);
    EXPECT_EQ(kernel_exp(infinity), infinity);
    EXPECT_EQ(kernel_exp(-infinity), 0);
    EXPECT_EQ(kernel_log(0), -infinity);
    EXPECT_EQ(kernel_log(infinity), infinity);
    EXPECT_TRUE(std::isnan(kernel_log(-1)));
    EXPECT_TRUE(std::isnan(kernel_log(nan)));
    EXPECT_EQ(kernel_pow(infinity, 0.5), infinity);
    EXPECT_EQ(kernel_pow(infinity, -0.5), 0);
}

TEST(KernelsTest, ExponentialEndsAt709Point78AndMinus745) {
    EXPECT_TRUE(std::isfinite(kernel_exp(709.78)));
    EXPECT_TRUE(std::isinf(kernel_exp(std::nextafter(709.78, 710))));
    EXPECT_EQ(kernel_exp(-745), 4.9406564584124654e-324);
    EXPECT_EQ(kernel_exp(std::nextafter(-745, -746)), 0);
}

TEST(KernelsTest, PowerReachesBothEndsOfTheRange) {
    EXPECT_EQ(kernel_pow(2, 1023.9999999999999), 0x1.FFFFFFFFFFD3Ap1023);
    EXPECT_TRUE(std::isinf(kernel_pow(2, 1024.0000000000002)));
    EXPECT_EQ(kernel_pow(2, -1074.25), 0x1p-1074);
    EXPECT_EQ(kernel_pow(2, -1075.5), 0);
}

}  // namespace
}  // namespace korvane
