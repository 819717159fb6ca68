#pragma once
// The dish record a host puts on its menu: see menu/Food.h. That header is kept with the menu
// sources so the meta-object compiler sees it; this is the name a host includes.

#include "menu/Food.h"
