#include "Delegates/Delegate.h"

uint64 FDelegateHandle::GenerateNewID()
{
	static uint64 NextId = 0;
	return ++NextId;
}
