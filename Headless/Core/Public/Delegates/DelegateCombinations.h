#pragma once

#include "Delegates/Delegate.h"
