// The state of a thread's float arithmetic: rounding, which operations trap, and the flags of what has
// happened.
#pragma once

#if defined(__x86_64__) || defined(__i386__)
#include <cstdint>
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

namespace vorlund::capi {

#if defined(__x86_64__) || defined(__i386__)

/// That of this thread, when it was made. Both units of x86 have one; those of <cfenv> take all registers of
/// the older unit out of it and back for every call, and those of 64-bit MinGW leave out the vector unit.
/// (Intel 64 and IA-32 Architectures Software Developer's Manual, volume 1, 8.1 and 10.2.3.)
class CFloatState {
public:
    CFloatState() noexcept : vectors_(_mm_getcsr()) {
        // Neither of them waits, so neither traps.
        asm volatile("fnstcw %0" : "=m"(control_));
        asm volatile("fnstsw %0" : "=am"(status_));
    }

    void Restore() const noexcept {
        const CFloatState now;
        if (now.control_ != control_ || ((now.status_ ^ status_) & kFlags) != 0) RestoreStack();
        if (now.vectors_ != vectors_) _mm_setcsr(vectors_);
    }

    /// From now on no operation traps.
    static void MaskTraps() noexcept {
        CFloatState state;
        if ((state.control_ & kMasks) == kMasks && (state.vectors_ & _MM_MASK_MASK) == _MM_MASK_MASK) return;
        state.control_ |= kMasks;
        state.status_ &= static_cast<std::uint16_t>(~kFlags);
        state.vectors_ = (state.vectors_ | _MM_MASK_MASK) & ~static_cast<unsigned int>(_MM_EXCEPT_MASK);
        state.Restore();
    }

private:
    // Of the control word: one for each exception that does not trap. Of the status word: one for each that
    // has happened, a fault of its stack, and that one of them is to trap.
    static constexpr std::uint16_t kMasks = 0x3F;
    static constexpr std::uint16_t kFlags = 0xFF;

    void RestoreStack() const noexcept {
        struct {
            std::uint16_t control, unused, status, rest[11];
        } unit;
        static_assert(sizeof unit == 28);
        asm volatile("fnstenv %0" : "=m"(unit));
        unit.control = control_;
        unit.status = static_cast<std::uint16_t>((unit.status & ~kFlags) | (status_ & kFlags));
        asm volatile("fldenv %0" : : "m"(unit));
    }

    std::uint16_t control_;
    std::uint16_t status_;
    unsigned int vectors_;
};

#else

/// That of this thread, when it was made.
class CFloatState {
public:
    CFloatState() noexcept { std::fegetenv(&state_); }
    void Restore() const noexcept { std::fesetenv(&state_); }
    /// From now on no operation traps.
    static void MaskTraps() noexcept {
        std::fenv_t before;
        std::feholdexcept(&before);
    }

private:
    std::fenv_t state_;
};

#endif

} // namespace vorlund::capi
