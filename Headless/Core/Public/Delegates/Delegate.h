// Single-cast and multicast delegates.
#pragma once

#include "Containers/Array.h"
#include "HAL/Platform.h"
#include "Templates/UnrealTemplate.h"

#include <functional>
#include <type_traits>

template <typename FuncType>
class TDelegate;

template <typename RetValType, typename... ParamTypes>
class TDelegate<RetValType(ParamTypes...)>
{
public:
	TDelegate() = default;

	template <typename... VarTypes>
	[[nodiscard]] static TDelegate CreateStatic(typename TIdentity<RetValType (*)(ParamTypes..., std::decay_t<VarTypes>...)>::Type InFunc, VarTypes&&... Vars)
	{
		TDelegate Result;
		if (InFunc)
		{
			Result.Callable = [InFunc, Vars...](ParamTypes... Params) -> RetValType
			{
				return InFunc(Forward<ParamTypes>(Params)..., Vars...);
			};
		}
		return Result;
	}

	template <typename FunctorType>
	[[nodiscard]] static TDelegate CreateLambda(FunctorType&& Functor)
	{
		TDelegate Result;
		Result.Callable = Forward<FunctorType>(Functor);
		return Result;
	}

	void BindStatic(RetValType (*InFunc)(ParamTypes...)) { *this = CreateStatic(InFunc); }

	template <typename FunctorType>
	void BindLambda(FunctorType&& Functor) { *this = CreateLambda(Forward<FunctorType>(Functor)); }

	[[nodiscard]] bool IsBound() const { return (bool)Callable; }
	void Unbind() { Callable = nullptr; }

	RetValType Execute(ParamTypes... Params) const
	{
		check(IsBound());
		return Callable(Forward<ParamTypes>(Params)...);
	}

	bool ExecuteIfBound(ParamTypes... Params) const
	{
		static_assert(std::is_void_v<RetValType>, "ExecuteIfBound is only for delegates without a return value");
		if (IsBound())
		{
			Callable(Forward<ParamTypes>(Params)...);
			return true;
		}
		return false;
	}

private:
	std::function<RetValType(ParamTypes...)> Callable;
};

class FDelegateHandle
{
public:
	enum EGenerateNewHandleType
	{
		GenerateNewHandle
	};

	FDelegateHandle() = default;
	explicit FDelegateHandle(EGenerateNewHandleType) : Id(GenerateNewID()) {}
	[[nodiscard]] bool IsValid() const { return Id != 0; }
	void Reset() { Id = 0; }
	[[nodiscard]] bool operator==(const FDelegateHandle& Other) const { return Id == Other.Id; }
	[[nodiscard]] bool operator!=(const FDelegateHandle& Other) const { return Id != Other.Id; }

private:
	static CORE_API uint64 GenerateNewID();

	uint64 Id = 0;
};

template <typename FuncType>
class TMulticastDelegate;

template <typename... ParamTypes>
class TMulticastDelegate<void(ParamTypes...)>
{
public:
	using FDelegate = TDelegate<void(ParamTypes...)>;

	FDelegateHandle Add(FDelegate Delegate)
	{
		const FDelegateHandle Handle(FDelegateHandle::GenerateNewHandle);
		Entries.Add(FEntry{ Handle, MoveTemp(Delegate) });
		return Handle;
	}

	FDelegateHandle AddStatic(void (*InFunc)(ParamTypes...)) { return Add(FDelegate::CreateStatic(InFunc)); }

	template <typename FunctorType>
	FDelegateHandle AddLambda(FunctorType&& Functor) { return Add(FDelegate::CreateLambda(Forward<FunctorType>(Functor))); }

	bool Remove(FDelegateHandle Handle)
	{
		return Entries.RemoveAll([Handle](const FEntry& Entry) { return Entry.Handle == Handle; }) > 0;
	}

	void Clear() { Entries.Empty(); }
	[[nodiscard]] bool IsBound() const { return Entries.Num() > 0; }

	void Broadcast(ParamTypes... Params) const
	{
		// A handler may add or remove handlers: call a copy of the list.
		const TArray<FEntry> Snapshot = Entries;
		for (const FEntry& Entry : Snapshot)
		{
			Entry.Delegate.ExecuteIfBound(Params...);
		}
	}

private:
	struct FEntry
	{
		FDelegateHandle Handle;
		FDelegate Delegate;
	};

	TArray<FEntry> Entries;
};

#define DECLARE_DELEGATE(DelegateName) typedef TDelegate<void()> DelegateName;
#define DECLARE_DELEGATE_OneParam(DelegateName, Param1Type) typedef TDelegate<void(Param1Type)> DelegateName;
#define DECLARE_DELEGATE_TwoParams(DelegateName, Param1Type, Param2Type) typedef TDelegate<void(Param1Type, Param2Type)> DelegateName;
#define DECLARE_DELEGATE_RetVal(ReturnValueType, DelegateName) typedef TDelegate<ReturnValueType()> DelegateName;
#define DECLARE_DELEGATE_RetVal_TwoParams(ReturnValueType, DelegateName, Param1Type, Param2Type) \
	typedef TDelegate<ReturnValueType(Param1Type, Param2Type)> DelegateName;
#define DECLARE_MULTICAST_DELEGATE_OneParam(DelegateName, Param1Type) typedef TMulticastDelegate<void(Param1Type)> DelegateName;
#define DECLARE_MULTICAST_DELEGATE_TwoParams(DelegateName, Param1Type, Param2Type) \
	typedef TMulticastDelegate<void(Param1Type, Param2Type)> DelegateName;
#define DECLARE_MULTICAST_DELEGATE_ThreeParams(DelegateName, Param1Type, Param2Type, Param3Type) \
	typedef TMulticastDelegate<void(Param1Type, Param2Type, Param3Type)> DelegateName;

// An event: anyone may listen, only its owning type broadcasts.
#define DECLARE_EVENT_TwoParams(OwningType, EventName, Param1Type, Param2Type) \
	class EventName : public TMulticastDelegate<void(Param1Type, Param2Type)> \
	{ \
		friend class OwningType; \
		using TMulticastDelegate<void(Param1Type, Param2Type)>::Broadcast; \
	};
