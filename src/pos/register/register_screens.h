#pragma once

namespace orvo::pos::registers {
// Adds the register screen, the counter correction and the fiscal operations screens to the
// ScreenRegistry.
void registerScreens();
} // namespace orvo::pos::registers
