#include "live/product_info.h"

#ifndef VELMORA_PRODUCT_NAME
#error "the build defines VELMORA_PRODUCT_NAME"
#endif
#ifndef VELMORA_PRODUCT_VERSION
#error "the build defines VELMORA_PRODUCT_VERSION"
#endif
#ifndef VELMORA_SPECIAL_BUILD
#define VELMORA_SPECIAL_BUILD ""
#endif

std::string ProductName() { return VELMORA_PRODUCT_NAME; }

std::string ProductVersion() { return VELMORA_PRODUCT_VERSION; }

std::string LegalCopyright() { return "Copyright (C) 2026 The Velmora developers"; }

std::string SpecialBuild() { return VELMORA_SPECIAL_BUILD; }
