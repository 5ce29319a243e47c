#include "Headless/MaterialSlotNames.h"

#include "Math/UnrealMathUtility.h"

namespace UE::Headless
{
	void MakeSlotNamesUnique(TArray<FName>& Names)
	{
		for (int32 Slot = 1; Slot < Names.Num(); ++Slot)
		{
			bool bRepeated = false;
			for (int32 Earlier = 0; Earlier < Slot && !bRepeated; ++Earlier)
			{
				bRepeated = Names[Earlier] == Names[Slot];
			}
			if (!bRepeated)
			{
				continue;
			}
			const FName Plain(Names[Slot], NAME_NO_NUMBER_INTERNAL);
			int32 HighestNumber = 0;
			for (const FName& Other : Names)
			{
				if (FName(Other, NAME_NO_NUMBER_INTERNAL) == Plain)
				{
					HighestNumber = FMath::Max(HighestNumber, Other.GetNumber());
				}
			}
			Names[Slot] = FName(Names[Slot], HighestNumber + 1);
		}
	}
}
