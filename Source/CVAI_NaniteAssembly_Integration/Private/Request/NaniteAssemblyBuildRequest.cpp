#include "Request/NaniteAssemblyBuildRequest.h"

#include "GenericPlatform/GenericPlatformStricmp.h"
#include "Shared/NaniteAssemblyLuaText.h"

#include <cmath>
#include <string>

namespace CVAI::NaniteAssembly
{
	namespace
	{
		// Lua access. A plain table is read directly; a value with a metatable (a proxy table, or a userdata) is
		// read inside a protected call, so that an error raised by its __index or __len reaches the script as
		// that error, after the reader's own state is cleaned up, instead of jumping over it.

		enum class EAccessKind
		{
			Field,
			Element,
			Length,
		};

		struct FAccess
		{
			EAccessKind Kind;
			const char* Key;
			lua_Integer Position;
		};

		// [-0, +1, e] Makes room for Count more values, or raises the binding library's stack-space error.
		void ReserveStack(lua_State* L, int Count)
		{
			luaL_checkstack(L, Count, "not enough Lua stack space to push this reference value");
		}

		// [-0, +0, -] A table without a metatable: reading it runs no Lua code.
		bool IsPlainTable(lua_State* L, int Index)
		{
			if (lua_type(L, Index) != LUA_TTABLE)
			{
				return false;
			}
			if (lua_getmetatable(L, Index))
			{
				lua_pop(L, 1);
				return false;
			}
			return true;
		}

		// [-2, +1, e] The protected body: the value at 1, the access (a light userdata) at 2.
		int RunAccess(lua_State* L)
		{
			const FAccess* Access = static_cast<const FAccess*>(lua_touserdata(L, 2));
			switch (Access->Kind)
			{
			case EAccessKind::Field:
				lua_getfield(L, 1, Access->Key);
				break;
			case EAccessKind::Element:
				lua_geti(L, 1, Access->Position);
				break;
			case EAccessKind::Length:
				lua_len(L, 1);
				break;
			}
			return 1;
		}

		// [-0, +1, e] Pushes the result of the access to the value at Index and returns its Lua type; a script
		// error is thrown as FScriptError with the stack as it was.
		int Access(lua_State* L, int Index, const FAccess& Request)
		{
			Index = lua_absindex(L, Index);
			ReserveStack(L, 3);
			if (IsPlainTable(L, Index))
			{
				switch (Request.Kind)
				{
				case EAccessKind::Field:
					return lua_getfield(L, Index, Request.Key);
				case EAccessKind::Element:
					return lua_geti(L, Index, Request.Position);
				case EAccessKind::Length:
					lua_len(L, Index);
					return lua_type(L, -1);
				}
			}
			lua_pushcfunction(L, &RunAccess);
			lua_pushvalue(L, Index);
			lua_pushlightuserdata(L, const_cast<FAccess*>(&Request));
			if (lua_pcall(L, 2, 1, 0) != LUA_OK)
			{
				size_t Length = 0;
				const char* Text = lua_type(L, -1) == LUA_TSTRING ? lua_tolstring(L, -1, &Length) : nullptr;
				std::string Message = Text ? std::string(Text, Length) : std::string("(error object is a ") + luaL_typename(L, -1) + " value)";
				lua_pop(L, 1);
				throw FScriptError(Message);
			}
			return lua_type(L, -1);
		}

		// [-0, +1, e] Pushes Value[Key] (honouring __index) and returns its Lua type.
		int PushField(lua_State* L, int Index, const char* Key)
		{
			return Access(L, Index, FAccess{ EAccessKind::Field, Key, 0 });
		}

		// [-0, +1, e] Pushes Value[Position] (honouring __index) and returns its Lua type.
		int PushElement(lua_State* L, int Index, lua_Integer Position)
		{
			return Access(L, Index, FAccess{ EAccessKind::Element, nullptr, Position });
		}

		// [-0, +0, e] The length operator (honouring __len); a length that is not an integer rounds to the nearest
		// one, half away from zero; a length that is not a number counts as 0.
		int64 ListLength(lua_State* L, int Index)
		{
			Access(L, Index, FAccess{ EAccessKind::Length, nullptr, 0 });
			int64 Length = 0;
			if (lua_isinteger(L, -1))
			{
				Length = (int64)lua_tointeger(L, -1);
			}
			else
			{
				int bIsNumber = 0;
				const lua_Number Value = lua_tonumberx(L, -1, &bIsNumber);
				if (bIsNumber && std::isfinite(Value))
				{
					const lua_Number Limited = Value < -9.0e18 ? -9.0e18 : (Value > 9.0e18 ? 9.0e18 : Value);
					Length = (int64)std::llround(Limited);
				}
			}
			lua_pop(L, 1);
			return Length;
		}

		// Restores the Lua stack's top when a reader returns, on every path (a thrown script error included).
		class FStackGuard
		{
		public:
			explicit FStackGuard(lua_State* InL)
				: L(InL)
				, Top(lua_gettop(InL))
			{
			}

			~FStackGuard()
			{
				lua_settop(L, Top);
			}

			FStackGuard(const FStackGuard&) = delete;
			FStackGuard& operator=(const FStackGuard&) = delete;

		private:
			lua_State* L;
			int Top;
		};

		// Key checks and number judgement.

		// The position of Key among the accepted keys, or INDEX_NONE. Lua strings end with a NUL after their last
		// byte, so each comparison stops at the first differing byte without measuring either string; a key with
		// an embedded NUL never equals an accepted key.
		int32 FindAcceptedKey(const char* Key, size_t KeyLength, TConstArrayView<const ANSICHAR*> AcceptedKeys)
		{
			for (int32 KeyIndex = 0; KeyIndex < AcceptedKeys.Num(); ++KeyIndex)
			{
				const char* Accepted = AcceptedKeys[KeyIndex];
				size_t Offset = 0;
				while (Offset < KeyLength && Accepted[Offset] != '\0' && Accepted[Offset] == Key[Offset])
				{
					++Offset;
				}
				if (Offset == KeyLength && Accepted[Offset] == '\0')
				{
					return KeyIndex;
				}
			}
			return INDEX_NONE;
		}

		FString JoinKeys(TConstArrayView<const ANSICHAR*> Keys)
		{
			FString Joined;
			for (int32 KeyIndex = 0; KeyIndex < Keys.Num(); ++KeyIndex)
			{
				if (KeyIndex > 0)
				{
					Joined += TEXT("|");
				}
				Joined += TextFromUtf8(Keys[KeyIndex]);
			}
			return Joined;
		}

		// [-0, +0, e] Walks the keys of the table at Index without metamethods; OnAccepted(KeyIndex) sees each
		// accepted key's value at the top of the stack. The caller has made room for a key and a value.
		template <typename FunctionType>
		bool WalkKeys(lua_State* L, int Index, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FContextPath& ContextPath, FunctionType&& OnAccepted,
			FString& OutError)
		{
			lua_pushnil(L);
			while (lua_next(L, Index) != 0)
			{
				if (lua_type(L, -2) != LUA_TSTRING)
				{
					OutError = ContextPath.ToString() + TEXT(": only string keys are accepted");
					lua_pop(L, 2);
					return false;
				}
				size_t KeyLength = 0;
				const char* Key = lua_tolstring(L, -2, &KeyLength);
				const int32 Match = FindAcceptedKey(Key, KeyLength, AcceptedKeys);
				if (Match == INDEX_NONE)
				{
					OutError = FString::Printf(TEXT("%s: unknown key '%s' (accepted: %s)"), *ContextPath.ToString(), *TextFromUtf8(Key), *JoinKeys(AcceptedKeys));
					lua_pop(L, 2);
					return false;
				}
				OnAccepted(Match);
				lua_pop(L, 1);
			}
			return true;
		}

		void IgnoreValue(int32)
		{
		}

		// The message for a number field whose value is not a finite number; kept out of the readers' hot path.
		FORCENOINLINE bool RefuseNumber(int Type, const ANSICHAR* Key, const FContextPath& ContextPath, FString& OutError)
		{
			const TCHAR* Fault = Type != LUA_TNUMBER ? TEXT("must be a number") : TEXT("must be finite");
			OutError = FString::Printf(TEXT("%s: '%s' %s"), *ContextPath.ToString(), *TextFromUtf8(Key), Fault);
			return false;
		}

		// Judges a field's value as the number field Key: nil takes the default, anything but a Lua number is
		// refused, and so is a number that is not finite.
		inline bool JudgeNumber(int Type, double Value, const ANSICHAR* Key, double Default, double& OutValue, const FContextPath& ContextPath,
			FString& OutError)
		{
			if (Type == LUA_TNUMBER && FMath::IsFinite(Value))
			{
				OutValue = Value;
				return true;
			}
			if (Type == LUA_TNIL)
			{
				OutValue = Default;
				return true;
			}
			return RefuseNumber(Type, Key, ContextPath, OutError);
		}

		// [-0, +0, e] Checks the keys of the value at Index (when it is a table) and, for a plain table, hands each
		// accepted key's value to Record in the same walk. Returns through bOutFetchLazily whether the values must
		// be fetched one by one instead, when the reader comes to them: a table with a metatable, or a userdata,
		// whose __index may answer differently (or fail) depending on what was asked before.
		template <typename RecordType>
		bool WalkAndRecord(lua_State* L, int Index, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FContextPath& ContextPath, RecordType&& Record,
			bool& bOutFetchLazily, FString& OutError)
		{
			bOutFetchLazily = !IsPlainTable(L, Index);
			if (lua_type(L, Index) != LUA_TTABLE)
			{
				return true;
			}
			if (bOutFetchLazily)
			{
				return WalkKeys(L, Index, AcceptedKeys, ContextPath, IgnoreValue, OutError);
			}
			return WalkKeys(L, Index, AcceptedKeys, ContextPath, Record, OutError);
		}

		// The values of a table's accepted keys, each in its own Lua stack slot. Gather checks the keys as
		// CheckOnlyKnownKeys does; for a plain table the same walk also fills every slot, since nothing can run
		// when its fields are read. For a table with a metatable (or a userdata) each value is fetched with
		// lua_getfield only when the reader asks for it, so that __index sees exactly the look-ups, in the order,
		// that reading field by field would make. Either way Fetch gives what lua_getfield would return.
		class FTableFields
		{
		public:
			// [-0, +Keys, e]
			bool Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FContextPath& ContextPath, FString& OutError)
			{
				L = Table.lua_state();
				TableIndex = Table.stack_index();
				Keys = AcceptedKeys;
				ReserveStack(L, AcceptedKeys.Num() + 2);
				FirstSlot = lua_gettop(L) + 1;
				for (int32 KeyIndex = 0; KeyIndex < AcceptedKeys.Num(); ++KeyIndex)
				{
					lua_pushnil(L);
				}
				const int First = FirstSlot;
				lua_State* State = L;
				return WalkAndRecord(
					L, TableIndex, AcceptedKeys, ContextPath, [State, First](int32 KeyIndex) { lua_copy(State, -1, First + KeyIndex); }, bFetchLazily, OutError);
			}

			// [-0, +0, e] Brings the value of the accepted key at KeyIndex into its slot and returns its Lua type.
			int Fetch(int32 KeyIndex) const
			{
				if (bFetchLazily)
				{
					PushField(L, TableIndex, Keys[KeyIndex]);
					lua_replace(L, Slot(KeyIndex));
				}
				return lua_type(L, Slot(KeyIndex));
			}

			// The stack index of the slot of the accepted key at KeyIndex.
			[[nodiscard]] int Slot(int32 KeyIndex) const { return FirstSlot + KeyIndex; }

		private:
			lua_State* L = nullptr;
			int TableIndex = 0;
			TConstArrayView<const ANSICHAR*> Keys;
			int FirstSlot = 0;
			bool bFetchLazily = false;
		};

		// The same for a table of numbers, without stack slots: a plain table's values are kept on the C++ side
		// (each key's Lua type, and its value when it is a number); Read then judges a run of them as
		// ReadNumberFields does, in key order, under the accepted keys' own names. For a table with a metatable
		// or a userdata, IsPresent and Read fetch as they go.
		class FTableNumbers
		{
		public:
			static constexpr int32 MaxKeys = 6;

			// [-0, +0, e] Called once per object: a key never seen keeps the type nil it starts with.
			bool Gather(const sol::stack_object& Table, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FContextPath& ContextPath, FString& OutError)
			{
				check(AcceptedKeys.Num() <= MaxKeys);
				L = Table.lua_state();
				TableIndex = Table.stack_index();
				Keys = AcceptedKeys;
				ReserveStack(L, 2);
				lua_State* State = L;
				auto Record = [this, State](int32 KeyIndex)
				{
					Types[KeyIndex] = lua_type(State, -1);
					if (Types[KeyIndex] == LUA_TNUMBER)
					{
						Values[KeyIndex] = (double)lua_tonumberx(State, -1, nullptr);
					}
				};
				return WalkAndRecord(L, TableIndex, AcceptedKeys, ContextPath, Record, bFetchLazily, OutError);
			}

			// [-0, +0, e] Whether any of Count accepted keys from FirstKey holds anything but nil. Every one of them
			// is asked, in order, as reading them field by field would.
			[[nodiscard]] bool IsAnyPresent(int32 FirstKey, int32 Count) const
			{
				bool bAnyPresent = false;
				for (int32 KeyIndex = FirstKey; KeyIndex < FirstKey + Count; ++KeyIndex)
				{
					bAnyPresent |= IsPresent(KeyIndex);
				}
				return bAnyPresent;
			}

			// [-0, +0, e] Count accepted keys from FirstKey, as numbers; nil takes the default.
			bool Read(int32 FirstKey, int32 Count, const double* Defaults, double* OutValues, const FContextPath& ContextPath, FString& OutError) const
			{
				if (bFetchLazily)
				{
					return ReadNumberFields(sol::stack_object(L, TableIndex), &Keys[FirstKey], Count, OutValues, Defaults, ContextPath, OutError);
				}
				for (int32 FieldIndex = 0; FieldIndex < Count; ++FieldIndex)
				{
					const int32 Key = FirstKey + FieldIndex;
					if (!JudgeNumber(Types[Key], Values[Key], Keys[Key], Defaults[FieldIndex], OutValues[FieldIndex], ContextPath, OutError))
					{
						return false;
					}
				}
				return true;
			}

		private:
			bool IsPresent(int32 KeyIndex) const
			{
				if (!bFetchLazily)
				{
					return Types[KeyIndex] != LUA_TNIL;
				}
				const int Type = PushField(L, TableIndex, Keys[KeyIndex]);
				lua_pop(L, 1);
				return Type != LUA_TNIL;
			}

			lua_State* L = nullptr;
			int TableIndex = 0;
			TConstArrayView<const ANSICHAR*> Keys;
			bool bFetchLazily = false;
			int Types[MaxKeys] = {};
			double Values[MaxKeys] = {};
		};

		// The transform's keys. Rotation takes either pitch/yaw/roll or the Euler x/y/z, which follow them.
		const ANSICHAR* const TransformKeys[] = { "location", "translation", "rotation", "scale" };
		const ANSICHAR* const AxisKeys[] = { "x", "y", "z" };
		const ANSICHAR* const RotationKeys[] = { "pitch", "yaw", "roll", "x", "y", "z" };
		constexpr int32 RotatorKeysFirst = 0;
		constexpr int32 EulerKeysFirst = 3;
		constexpr int32 AxisCount = 3;
		const double ZeroDefaults[AxisCount] = { 0.0, 0.0, 0.0 };
		const double UnitDefaults[AxisCount] = { 1.0, 1.0, 1.0 };

		// Positions in TransformKeys.
		enum class ETransformKey : int32
		{
			Location,
			Translation,
			Rotation,
			Scale,
		};

		constexpr int32 KeyIndexOf(ETransformKey Key)
		{
			return (int32)Key;
		}

		// [-0, +0, e]
		bool ReadAxisTable(lua_State* L, int TableIndex, const FContextPath& Path, const double* Defaults, FVector& OutVector, FString& OutError)
		{
			FTableNumbers Numbers;
			double Values[AxisCount];
			if (!Numbers.Gather(sol::stack_object(L, TableIndex), AxisKeys, Path, OutError) || !Numbers.Read(0, AxisCount, Defaults, Values, Path, OutError))
			{
				return false;
			}
			OutVector = FVector(Values[0], Values[1], Values[2]);
			return true;
		}

		// [-0, +0, e] "translation" is only an alias: it is looked at when "location" is nil, and named as location.
		bool ReadLocation(lua_State* L, const FTableFields& Fields, const FContextPath& Path, FVector& OutLocation, FString& OutError)
		{
			int32 Key = KeyIndexOf(ETransformKey::Location);
			int Type = Fields.Fetch(Key);
			if (Type == LUA_TNIL)
			{
				Key = KeyIndexOf(ETransformKey::Translation);
				Type = Fields.Fetch(Key);
			}
			if (Type == LUA_TNIL)
			{
				return true;
			}
			if (Type != LUA_TTABLE)
			{
				OutError = Path.ToString() + TEXT(": 'location' must be a table {x,y,z}");
				return false;
			}
			const FContextPath LocationPath(Path, TEXT(".location"));
			return ReadAxisTable(L, Fields.Slot(Key), LocationPath, ZeroDefaults, OutLocation, OutError);
		}

		// [-0, +0, e]
		bool ReadRotation(lua_State* L, const FTableFields& Fields, const FContextPath& Path, FRotator& OutRotation, FString& OutError)
		{
			const int32 Key = KeyIndexOf(ETransformKey::Rotation);
			const int Type = Fields.Fetch(Key);
			if (Type == LUA_TNIL)
			{
				return true;
			}
			if (Type != LUA_TTABLE)
			{
				OutError = Path.ToString() + TEXT(": 'rotation' must be a table {pitch,yaw,roll} or Euler {x,y,z}");
				return false;
			}
			const FContextPath RotationPath(Path, TEXT(".rotation"));
			FTableNumbers Angles;
			if (!Angles.Gather(sol::stack_object(L, Fields.Slot(Key)), RotationKeys, RotationPath, OutError))
			{
				return false;
			}
			// Presence is any value but nil; its type is judged when it is read.
			const bool bRotatorForm = Angles.IsAnyPresent(RotatorKeysFirst, AxisCount);
			const bool bEulerForm = Angles.IsAnyPresent(EulerKeysFirst, AxisCount);
			double Values[AxisCount];
			if (!bEulerForm)
			{
				if (!Angles.Read(RotatorKeysFirst, AxisCount, ZeroDefaults, Values, RotationPath, OutError))
				{
					return false;
				}
				OutRotation = FRotator(Values[0], Values[1], Values[2]);
				return true;
			}
			if (bRotatorForm)
			{
				OutError = RotationPath.ToString() + TEXT(": use either {pitch,yaw,roll} or Euler {x,y,z}, not both");
				return false;
			}
			if (!Angles.Read(EulerKeysFirst, AxisCount, ZeroDefaults, Values, RotationPath, OutError))
			{
				return false;
			}
			// Euler x is roll, y is pitch, z is yaw.
			OutRotation = FRotator::MakeFromEuler(FVector(Values[0], Values[1], Values[2]));
			return true;
		}

		// [-0, +0, e]
		bool ReadScale(lua_State* L, const FTableFields& Fields, const FContextPath& Path, FVector& OutScale, FString& OutError)
		{
			const int32 Key = KeyIndexOf(ETransformKey::Scale);
			const int Type = Fields.Fetch(Key);
			if (Type == LUA_TNIL)
			{
				return true;
			}
			if (Type == LUA_TNUMBER)
			{
				const double Uniform = (double)lua_tonumberx(L, Fields.Slot(Key), nullptr);
				if (!FMath::IsFinite(Uniform))
				{
					OutError = Path.ToString() + TEXT(": 'scale' must be finite");
					return false;
				}
				OutScale = FVector(Uniform, Uniform, Uniform);
				return true;
			}
			if (Type != LUA_TTABLE)
			{
				OutError = Path.ToString() + TEXT(": 'scale' must be a number or a table {x,y,z}");
				return false;
			}
			const FContextPath ScalePath(Path, TEXT(".scale"));
			return ReadAxisTable(L, Fields.Slot(Key), ScalePath, UnitDefaults, OutScale, OutError);
		}

		// The request's own keys and words.
		const ANSICHAR* const RequestKeys[] = { "parts", "output", "overwrite", "save", "wait_for_compile" };
		const ANSICHAR* const PartKeys[] = { "mesh", "transforms", "material_merge", "material_overrides" };
		constexpr ENaniteAssemblyMergeMode MergeModes[] = { ENaniteAssemblyMergeMode::IdenticalMaterials, ENaniteAssemblyMergeMode::SlotNames,
			ENaniteAssemblyMergeMode::MaterialIndices };

		// Untrusted lengths (a __len can answer anything) only size the first allocation up to this.
		constexpr int64 MaxReservation = 1 << 20;

		// "identical_materials|slot_names|material_indices": the merge words as the messages list them.
		FString MergeWordList()
		{
			FString Words;
			for (const ENaniteAssemblyMergeMode Mode : MergeModes)
			{
				if (!Words.IsEmpty())
				{
					Words += TEXT("|");
				}
				Words += MaterialMergeName(Mode);
			}
			return Words;
		}

		// [-0, +0, -] The string at the top of the stack as an engine text, when it has at least one byte.
		bool TakeNonEmptyString(lua_State* L, int Type, FString& OutText)
		{
			size_t Length = 0;
			const char* Bytes = Type == LUA_TSTRING ? lua_tolstring(L, -1, &Length) : nullptr;
			if (!Bytes || Length == 0)
			{
				return false;
			}
			OutText = TextFromUtf8(Bytes);
			return true;
		}

		// [-0, +0, e] Hands elements 1..Count of the list at ListIndex, each pushed at the top of the stack, to
		// ReadElement(Position) in order; the first that refuses ends the walk.
		template <typename FunctionType>
		bool ReadListElements(lua_State* L, int ListIndex, int64 Count, FunctionType&& ReadElement)
		{
			for (int64 Position = 1; Position <= Count; ++Position)
			{
				const int Type = PushElement(L, ListIndex, (lua_Integer)Position);
				if (!ReadElement(Position, Type))
				{
					return false;
				}
				lua_pop(L, 1);
			}
			return true;
		}

		// [-0, +0, e]
		bool ReadTransforms(lua_State* L, int PartIndex, const FContextPath& PartPath, TArray<FTransform>& OutTransforms, FString& OutError)
		{
			FStackGuard Guard(L);
			if (PushField(L, PartIndex, "transforms") != LUA_TTABLE)
			{
				OutError = PartPath.ToString() + TEXT(": 'transforms' must be a non-empty list of transform tables");
				return false;
			}
			const int ListIndex = lua_gettop(L);
			const int64 Count = ListLength(L, ListIndex);
			if (Count < 1)
			{
				OutError = PartPath.ToString() + TEXT(": 'transforms' is empty; every part needs at least one transform ({} is identity)");
				return false;
			}
			OutTransforms.Reserve((int32)FMath::Min(Count, MaxReservation));
			return ReadListElements(L, ListIndex, Count, [L, &PartPath, &OutTransforms, &OutError](int64 Position, int)
			{
				const FContextPath TransformPath(PartPath, TEXT(".transforms"), Position);
				return ReadTransform(sol::stack_object(L, -1), TransformPath, OutTransforms.AddDefaulted_GetRef(), OutError);
			});
		}

		// [-0, +0, e]
		bool ReadMaterialMerge(lua_State* L, int PartIndex, const FContextPath& PartPath, ENaniteAssemblyMergeMode& OutMode, FString& OutError)
		{
			FStackGuard Guard(L);
			const int Type = PushField(L, PartIndex, "material_merge");
			if (Type == LUA_TNIL)
			{
				return true;
			}
			if (Type != LUA_TSTRING)
			{
				OutError = FString::Printf(TEXT("%s: 'material_merge' must be a string (%s)"), *PartPath.ToString(), *MergeWordList());
				return false;
			}
			FString ParseError;
			if (!ParseMaterialMerge(TextFromUtf8(lua_tostring(L, -1)), OutMode, ParseError))
			{
				OutError = PartPath.ToString() + TEXT(": ") + ParseError;
				return false;
			}
			return true;
		}

		// [-0, +0, e]
		bool ReadMaterialOverrides(lua_State* L, int PartIndex, const FContextPath& PartPath, TArray<FString>& OutOverrides, FString& OutError)
		{
			FStackGuard Guard(L);
			const int Type = PushField(L, PartIndex, "material_overrides");
			if (Type == LUA_TNIL)
			{
				return true;
			}
			if (Type != LUA_TTABLE)
			{
				OutError = PartPath.ToString() + TEXT(": 'material_overrides' must be a list of material paths");
				return false;
			}
			const int ListIndex = lua_gettop(L);
			return ReadListElements(L, ListIndex, ListLength(L, ListIndex), [L, &PartPath, &OutOverrides, &OutError](int64 Position, int ElementType)
			{
				FString Override;
				if (!TakeNonEmptyString(L, ElementType, Override))
				{
					OutError = FContextPath(PartPath, TEXT(".material_overrides"), Position).ToString() + TEXT(": must be a material path string");
					return false;
				}
				OutOverrides.Add(MoveTemp(Override));
				return true;
			});
		}

		// [-0, +0, e] The part at the top of the stack.
		bool ReadPart(lua_State* L, int ElementType, const FContextPath& PartPath, FNaniteAssemblyPartRequest& OutPart, FString& OutError)
		{
			const int PartIndex = lua_gettop(L);
			if (ElementType != LUA_TTABLE)
			{
				OutError = PartPath.ToString() + TEXT(": must be a table { mesh=, transforms={...} }");
				return false;
			}
			if (!CheckOnlyKnownKeys(sol::stack_object(L, PartIndex), PartKeys, PartPath, OutError))
			{
				return false;
			}
			{
				FStackGuard Guard(L);
				if (!TakeNonEmptyString(L, PushField(L, PartIndex, "mesh"), OutPart.MeshPath))
				{
					OutError = PartPath.ToString() + TEXT(": 'mesh' (static mesh path) is required");
					return false;
				}
			}
			return ReadTransforms(L, PartIndex, PartPath, OutPart.Transforms, OutError)
				&& ReadMaterialMerge(L, PartIndex, PartPath, OutPart.MaterialMerge, OutError)
				&& ReadMaterialOverrides(L, PartIndex, PartPath, OutPart.MaterialOverrides, OutError);
		}

		// [-0, +0, e] The argument at ArgumentIndex.
		bool ReadRequest(lua_State* L, int ArgumentIndex, FNaniteAssemblyBuildRequest& Request, FString& OutError)
		{
			const FString RootText(TEXT("nanite_assembly_build"));
			const FContextPath Root(RootText);
			const sol::stack_object Argument(L, ArgumentIndex);
			if (!CheckOnlyKnownKeys(Argument, RequestKeys, Root, OutError))
			{
				return false;
			}
			{
				FStackGuard Guard(L);
				if (PushField(L, ArgumentIndex, "output") != LUA_TSTRING)
				{
					OutError = TEXT("nanite_assembly_build: 'output' (package path of the assembly mesh to create) is required");
					return false;
				}
				Request.Output = TextFromUtf8(lua_tostring(L, -1));
			}
			if (!ReadOptionalBool(Argument, "overwrite", Request.bOverwrite, OutError) || !ReadOptionalBool(Argument, "save", Request.bSave, OutError)
				|| !ReadOptionalBool(Argument, "wait_for_compile", Request.bWaitForCompile, OutError))
			{
				return false;
			}

			FStackGuard Guard(L);
			if (PushField(L, ArgumentIndex, "parts") != LUA_TTABLE)
			{
				OutError = TEXT("nanite_assembly_build: 'parts' must be a non-empty list of { mesh=, transforms={...} }");
				return false;
			}
			const int PartsIndex = lua_gettop(L);
			const int64 Count = ListLength(L, PartsIndex);
			if (Count <= 0)
			{
				OutError = TEXT("nanite_assembly_build: 'parts' is empty; at least one part with one transform is required");
				return false;
			}
			// Keys of the list outside 1..count are not looked at.
			Request.Parts.Reserve((int32)FMath::Min(Count, MaxReservation));
			return ReadListElements(L, PartsIndex, Count, [L, &Root, &Request, &OutError](int64 Position, int ElementType)
			{
				const FContextPath PartPath(Root, TEXT(" parts"), Position);
				return ReadPart(L, ElementType, PartPath, Request.Parts.AddDefaulted_GetRef(), OutError);
			});
		}
	}

	FString FContextPath::ToString() const
	{
		FString Out;
		AppendTo(Out);
		return Out;
	}

	void FContextPath::AppendTo(FString& Out) const
	{
		if (Root)
		{
			Out += *Root;
			return;
		}
		Parent->AppendTo(Out);
		Out += Suffix;
		if (bHasPosition)
		{
			Out += FString::Printf(TEXT("[%lld]"), (long long)Position);
		}
	}

	bool CheckOnlyKnownKeys(const sol::stack_object& Value, TConstArrayView<const ANSICHAR*> AcceptedKeys, const FContextPath& ContextPath, FString& OutError)
	{
		lua_State* L = Value.lua_state();
		if (lua_type(L, Value.stack_index()) != LUA_TTABLE)
		{
			return true;
		}
		FStackGuard Guard(L);
		ReserveStack(L, 2);
		return WalkKeys(L, Value.stack_index(), AcceptedKeys, ContextPath, IgnoreValue, OutError);
	}

	bool ReadNumberFields(const sol::stack_object& Table, const ANSICHAR* const* KeyNames, int32 Count, double* OutValues, const double* Defaults,
		const FContextPath& ContextPath, FString& OutError)
	{
		lua_State* L = Table.lua_state();
		const int Index = Table.stack_index();
		FStackGuard Guard(L);
		for (int32 FieldIndex = 0; FieldIndex < Count; ++FieldIndex)
		{
			const int Type = PushField(L, Index, KeyNames[FieldIndex]);
			const double Value = Type == LUA_TNUMBER ? (double)lua_tonumberx(L, -1, nullptr) : 0.0;
			if (!JudgeNumber(Type, Value, KeyNames[FieldIndex], Defaults[FieldIndex], OutValues[FieldIndex], ContextPath, OutError))
			{
				return false;
			}
			lua_pop(L, 1);
		}
		return true;
	}

	bool ReadOptionalBool(const sol::stack_object& Table, const ANSICHAR* KeyName, bool& InOutValue, FString& OutError)
	{
		lua_State* L = Table.lua_state();
		FStackGuard Guard(L);
		const int Type = PushField(L, Table.stack_index(), KeyName);
		if (Type == LUA_TNIL)
		{
			return true;
		}
		if (Type != LUA_TBOOLEAN)
		{
			// This reader serves only the top level of nanite_assembly_build, whose name the message carries.
			OutError = FString::Printf(TEXT("nanite_assembly_build: '%s' must be a boolean"), *TextFromUtf8(KeyName));
			return false;
		}
		InOutValue = lua_toboolean(L, -1) != 0;
		return true;
	}

	bool ReadTransform(const sol::stack_object& Value, const FContextPath& ContextPath, FTransform& OutTransform, FString& OutError)
	{
		lua_State* L = Value.lua_state();
		if (lua_type(L, Value.stack_index()) != LUA_TTABLE)
		{
			OutError = ContextPath.ToString() + TEXT(": each transform must be a table {location=,rotation=,scale=}");
			return false;
		}
		FStackGuard Guard(L);
		FTableFields Fields;
		if (!Fields.Gather(Value, TransformKeys, ContextPath, OutError))
		{
			return false;
		}
		// Faults are reported in the order location, rotation, scale.
		FVector Location = FVector::ZeroVector;
		FRotator Rotation = FRotator::ZeroRotator;
		FVector Scale = FVector::OneVector;
		if (!ReadLocation(L, Fields, ContextPath, Location, OutError) || !ReadRotation(L, Fields, ContextPath, Rotation, OutError)
			|| !ReadScale(L, Fields, ContextPath, Scale, OutError))
		{
			return false;
		}
		OutTransform = FTransform(Rotation.Quaternion(), Location, Scale);
		return true;
	}

	bool ReadBuildRequest(const sol::table& Argument, FNaniteAssemblyBuildRequest& InOutRequest, FString& OutError)
	{
		lua_State* L = Argument.lua_state();
		FStackGuard Guard(L);
		ReserveStack(L, 1);
		Argument.push(L);
		return ReadRequest(L, lua_gettop(L), InOutRequest, OutError);
	}

	bool ParseMaterialMerge(const FString& Word, ENaniteAssemblyMergeMode& OutMode, FString& OutError)
	{
		for (const ENaniteAssemblyMergeMode Mode : MergeModes)
		{
			const TCHAR* Name = MaterialMergeName(Mode);
			if (Word.Len() == FCString::Strlen(Name) && FGenericPlatformStricmp::Stricmp(*Word, Name) == 0)
			{
				OutMode = Mode;
				return true;
			}
		}
		OutError = FString::Printf(TEXT("unknown material_merge '%s' (%s)"), *Word, *MergeWordList());
		return false;
	}

	const TCHAR* MaterialMergeName(ENaniteAssemblyMergeMode Mode)
	{
		switch (Mode)
		{
		case ENaniteAssemblyMergeMode::IdenticalMaterials:
			return TEXT("identical_materials");
		case ENaniteAssemblyMergeMode::SlotNames:
			return TEXT("slot_names");
		case ENaniteAssemblyMergeMode::MaterialIndices:
			return TEXT("material_indices");
		default:
			return TEXT("unknown");
		}
	}
}
