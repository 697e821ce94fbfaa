#pragma once

// Everything a host needs from the editor library, with the curve model beneath it.
#include "splinorlib/SplinorLib.h"

#include "render/ColorsObserver.h"
#include "render/DomainSliderObserver.h"
#include "view/ViewportObserver.h"
