#pragma once

#include "Math/TransformVectorized.h"
