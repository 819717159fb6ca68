#pragma once
// The observable menu state: see menu/FoodViewModel.h. That header is kept with the menu
// sources so the meta-object compiler sees it; this is the name a host includes.

#include "menu/FoodViewModel.h"
