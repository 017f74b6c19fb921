// Money over time, and random numbers.
#include <chrono>
#include <cmath>
#include <random>

#include "builtins/arguments.h"
#include "builtins/handlers.h"

namespace zobase {

namespace {

// The generator of rand: one per thread, so stacks on other threads draw
// their own sequences; it starts from the same seed in every thread.
constexpr uint64_t DEFAULT_RANDOM_SEED = 100001;

std::mt19937_64& random_engine() {
    thread_local std::mt19937_64 engine(DEFAULT_RANDOM_SEED);
    return engine;
}

uint64_t clock_seed() {
    return static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

// 53 random bits below 1.0: the same sequence for a seed on every machine.
double next_random() { return static_cast<double>(random_engine()() >> 11) * 0x1.0p-53; }

double number_argument(VmStack* stack, unsigned long long i) {
    return static_cast<double>(argument(stack, i));
}

}  // namespace

// payment(principal, rate, periods): the payment per period that repays the
// principal with interest at the rate per period.
void stackcall_payment(VmStack* stack, unsigned long long, Variant* result) {
    double principal = number_argument(stack, 1);
    double rate = number_argument(stack, 2);
    double periods = number_argument(stack, 3);
    if (periods == 0) throw RuntimeError(ERR_ARGUMENT_INVALID);
    double payment = rate == 0 ? principal / periods
                               : principal * rate / (1 - std::pow(1 + rate, -periods));
    result->set_float(payment, DECIMALS_UNKNOWN);
}

// fv(payment, rate, periods): what the payments grow to at the rate per period.
void stackcall_fv(VmStack* stack, unsigned long long, Variant* result) {
    double payment = number_argument(stack, 1);
    double rate = number_argument(stack, 2);
    double periods = static_cast<double>(static_cast<integer_type_st>(argument(stack, 3)));
    double value = rate == 0 ? payment * periods
                             : payment * (std::pow(1 + rate, periods) - 1) / rate;
    result->set_float(value, DECIMALS_UNKNOWN);
}

// rand(): the next number from 0 up to 1; rand(seed) starts again from a
// positive seed, or from the clock for a seed of 0 or below.
void stackcall_rand(VmStack* stack, unsigned long long argc, Variant* result) {
    if (argc >= 1) {
        double seed = number_argument(stack, 1);
        random_engine().seed(seed > 0 ? static_cast<uint64_t>(std::fmod(seed, 0x1.0p64)) : clock_seed());
    }
    result->set_float(next_random(), DECIMALS_UNKNOWN);
}

// srand(): starts rand from the clock and returns the seed it took.
void stackcall_srand(VmStack*, unsigned long long, Variant* result) {
    uint64_t seed = clock_seed() % (1ull << 53);
    random_engine().seed(seed);
    result->set_float(static_cast<double>(seed), 0);
}

}  // namespace zobase
