// Empty: see android.h.
#pragma once
