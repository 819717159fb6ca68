#pragma once
// The public navigation path holder: see menu/Router.h. That header is kept with the menu
// sources so the meta-object compiler sees it; this is the name a host includes.

#include "menu/Router.h"
