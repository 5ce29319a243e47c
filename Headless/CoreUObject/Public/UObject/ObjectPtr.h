// TObjectPtr: the pointer type of object properties; behaves as a plain pointer here.
#pragma once

#include <cstddef>
#include <type_traits>

class UObject;

namespace UE::Core::Private::ObjectPtr
{
	template <typename T, typename = void>
	struct TIsComplete : std::false_type
	{
	};

	template <typename T>
	struct TIsComplete<T, std::void_t<decltype(sizeof(T))>> : std::true_type
	{
	};
}

template <typename T>
class TObjectPtr
{
public:
	TObjectPtr() = default;
	TObjectPtr(std::nullptr_t) {}
	TObjectPtr(T* InObject)
		: Object(InObject)
	{
		static_assert(!UE::Core::Private::ObjectPtr::TIsComplete<T>::value || std::is_base_of_v<UObject, std::remove_cv_t<T>>,
			"TObjectPtr can only be used with UObject types");
	}

	template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
	TObjectPtr(const TObjectPtr<U>& Other) : Object(Other.Get()) {}

	TObjectPtr& operator=(T* InObject)
	{
		Object = InObject;
		return *this;
	}

	[[nodiscard]] T* Get() const { return Object; }
	operator T*() const { return Object; }
	T* operator->() const { return Object; }
	T& operator*() const { return *Object; }
	explicit operator bool() const { return Object != nullptr; }

	[[nodiscard]] bool operator==(const TObjectPtr& Other) const { return Object == Other.Object; }
	[[nodiscard]] bool operator!=(const TObjectPtr& Other) const { return Object != Other.Object; }
	template <typename U>
	[[nodiscard]] bool operator==(const U* Other) const { return Object == Other; }
	template <typename U>
	[[nodiscard]] bool operator!=(const U* Other) const { return Object != Other; }
	[[nodiscard]] bool operator==(std::nullptr_t) const { return Object == nullptr; }
	[[nodiscard]] bool operator!=(std::nullptr_t) const { return Object != nullptr; }

private:
	T* Object = nullptr;
};
