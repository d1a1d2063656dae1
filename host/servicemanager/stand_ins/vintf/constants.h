// Empty: see VintfObject.h.
#pragma once
