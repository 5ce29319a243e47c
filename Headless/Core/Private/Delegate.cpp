#include "Delegates/Delegate.h"

namespace UE::Core::Private
{
	uint64 NextDelegateHandleId()
	{
		static uint64 NextId = 0;
		return ++NextId;
	}
}
