#pragma once

/**
 * The one switch of the hardened build: the compile definition QUEN_HARDENED.
 *
 * Off, the library behaves as its callers and the ISP HAL know it, hazards included. On, it
 * survives callers and ISPs that break the contract; well-behaved ones see no difference.
 * docs/reliability.md says what each build promises.
 */

namespace quen {

#if defined(QUEN_HARDENED)
inline constexpr bool kHardened = true;
#else
inline constexpr bool kHardened = false;
#endif

}  // namespace quen
