#pragma once

#include "splinorlib/SplinorContainer.h"

#include <memory>

/// Fills the container with the channels of a ball that bounces three times and comes to rest:
/// its height, its travel and its squash, over 96 frames.
void AddBouncingBall(Ovantis::SplinorLib::v19::SplinorContainer& ioCurves);
