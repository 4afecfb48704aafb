#ifndef TESTS_SUPPORT_COUNTDOWN_H
#define TESTS_SUPPORT_COUNTDOWN_H

namespace test {

/// What happens after the one that fails.
enum class Failing { once, forGood };

/// Counts events of one kind up to the one that is to fail. At first none is.
class Countdown {
public:
    /// The `number`-th event from now on fails, counted from 1; with Failing::forGood so do all after it.
    constexpr void start(long number, Failing failing) noexcept {
        left_ = number;
        failing_ = failing;
        happened_ = false;
    }
    constexpr void stop() noexcept { start(0, Failing::once); }

    /// To be asked at each event: whether this one fails.
    constexpr bool strikes() noexcept {
        if (happened_) {
            return failing_ == Failing::forGood;
        }
        happened_ = left_ > 0 && --left_ == 0;
        return happened_;
    }

    /// Whether an event has failed since the start.
    constexpr bool happened() const noexcept { return happened_; }

private:
    long left_ = 0;
    Failing failing_ = Failing::once;
    bool happened_ = false;
};

} // namespace test

#endif
