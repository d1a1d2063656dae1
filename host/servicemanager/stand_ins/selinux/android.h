// In a guest every caller may do everything: of SELinux nothing is called but what frees the own
// context.
#pragma once

inline void freecon(char* /*context*/) {}
