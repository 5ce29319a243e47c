// Reference-counted pointers with the engine's names.
#pragma once

#include "Misc/AssertionMacros.h"
#include "Templates/UnrealTemplate.h"

#include <memory>

template <typename ObjectType>
class TSharedRef;

template <typename ObjectType>
class TSharedPtr
{
public:
	TSharedPtr() = default;
	TSharedPtr(std::nullptr_t) {}

	template <typename OtherType, typename = std::enable_if_t<std::is_convertible_v<OtherType*, ObjectType*>>>
	TSharedPtr(const TSharedPtr<OtherType>& Other) : Ptr(Other.ToStd()) {}

	template <typename OtherType, typename = std::enable_if_t<std::is_convertible_v<OtherType*, ObjectType*>>>
	TSharedPtr(const TSharedRef<OtherType>& Other) : Ptr(Other.ToStd()) {}

	[[nodiscard]] bool IsValid() const { return (bool)Ptr; }
	explicit operator bool() const { return (bool)Ptr; }
	[[nodiscard]] ObjectType* Get() const { return Ptr.get(); }
	ObjectType* operator->() const { check(Ptr); return Ptr.get(); }
	ObjectType& operator*() const { check(Ptr); return *Ptr; }
	void Reset() { Ptr.reset(); }
	[[nodiscard]] TSharedRef<ObjectType> ToSharedRef() const { check(Ptr); return TSharedRef<ObjectType>(Ptr); }
	[[nodiscard]] bool operator==(const TSharedPtr& Other) const { return Ptr == Other.Ptr; }
	[[nodiscard]] bool operator==(std::nullptr_t) const { return !Ptr; }

private:
	template <typename OtherType>
	friend class TSharedPtr;
	template <typename OtherType>
	friend class TSharedRef;

	explicit TSharedPtr(std::shared_ptr<ObjectType> InPtr) : Ptr(MoveTemp(InPtr)) {}
	[[nodiscard]] const std::shared_ptr<ObjectType>& ToStd() const { return Ptr; }

	std::shared_ptr<ObjectType> Ptr;
};

template <typename ObjectType>
class TSharedRef
{
public:
	template <typename OtherType, typename = std::enable_if_t<std::is_convertible_v<OtherType*, ObjectType*>>>
	TSharedRef(const TSharedRef<OtherType>& Other) : Ptr(Other.ToStd()) {}

	[[nodiscard]] ObjectType& Get() const { return *Ptr; }
	ObjectType* operator->() const { return Ptr.get(); }
	ObjectType& operator*() const { return *Ptr; }
	[[nodiscard]] TSharedPtr<ObjectType> ToSharedPtr() const { return TSharedPtr<ObjectType>(Ptr); }

private:
	template <typename OtherType>
	friend class TSharedPtr;
	template <typename OtherType>
	friend class TSharedRef;
	template <typename OtherType, typename... ArgTypes>
	friend TSharedRef<OtherType> MakeShared(ArgTypes&&... Args);

	explicit TSharedRef(std::shared_ptr<ObjectType> InPtr) : Ptr(MoveTemp(InPtr)) { check(Ptr); }
	[[nodiscard]] const std::shared_ptr<ObjectType>& ToStd() const { return Ptr; }

	std::shared_ptr<ObjectType> Ptr;
};

template <typename ObjectType, typename... ArgTypes>
[[nodiscard]] TSharedRef<ObjectType> MakeShared(ArgTypes&&... Args)
{
	return TSharedRef<ObjectType>(std::make_shared<ObjectType>(Forward<ArgTypes>(Args)...));
}
