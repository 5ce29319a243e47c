// Single-owner pointer with the engine's names.
#pragma once

#include "Templates/UnrealTemplate.h"

#include <memory>

template <typename T>
class TUniquePtr
{
public:
	TUniquePtr() = default;
	TUniquePtr(std::nullptr_t) {}
	explicit TUniquePtr(T* InPtr) : Ptr(InPtr) {}
	TUniquePtr(TUniquePtr&&) noexcept = default;
	TUniquePtr& operator=(TUniquePtr&&) noexcept = default;

	template <typename OtherType, typename = std::enable_if_t<std::is_convertible_v<OtherType*, T*>>>
	TUniquePtr(TUniquePtr<OtherType>&& Other) : Ptr(Other.Release()) {}

	[[nodiscard]] bool IsValid() const { return (bool)Ptr; }
	explicit operator bool() const { return (bool)Ptr; }
	[[nodiscard]] T* Get() const { return Ptr.get(); }
	T* operator->() const { return Ptr.get(); }
	T& operator*() const { return *Ptr; }
	void Reset(T* InPtr = nullptr) { Ptr.reset(InPtr); }
	[[nodiscard]] T* Release() { return Ptr.release(); }

private:
	std::unique_ptr<T> Ptr;
};

template <typename T, typename... ArgTypes>
[[nodiscard]] TUniquePtr<T> MakeUnique(ArgTypes&&... Args)
{
	return TUniquePtr<T>(new T(Forward<ArgTypes>(Args)...));
}
