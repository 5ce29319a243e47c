// Harness-only: the host's Lua sessions and a view into its registrar.
#pragma once

#include "CorvaneExtensionRegistrar.h"
#include "Headless/LuaGuards.h"
#include "Headless/LuaSandbox.h"
#include "LuaSessionData.h"

#include <functional>
#include <memory>
#include <string>

namespace sol
{
	class state;
}

namespace UE::Headless
{
	struct FRegisteredBinding
	{
		FString ExtensionId;
		FString BindingName;
		TArray<FLuaFunctionDoc> Docs;
		FCorvaneLuaBinder Binder;
	};

	struct CORVANEAI_API FCorvaneRegistrarAccess
	{
		static const TArray<FCorvaneExtensionDescriptor>& GetExtensions();
		static TArray<FRegisteredBinding> GetBindings();
		// Whether the host's own fields of a descriptor are as the host's constructor sets them.
		static bool HasDefaultHostFields(const FCorvaneExtensionDescriptor& Descriptor);

	private:
		// Holds the compile-time checks that the descriptor keeps the host's layout.
		static void CheckDescriptorLayout();
	};

	struct CORVANEAI_API FLuaSessionAccess
	{
		static const TArray<FString>& GetLogLines(const FLuaSessionData& Session);
		static void SetLogListener(FLuaSessionData& Session, std::function<void(const FString&)> Listener);
	};

	// One Lua 5.4 session of the host: standard libraries open, every registered binder called once.
	class CORVANEAI_API FCorvaneLuaSession
	{
	public:
		// Binders run inside a protected call; a binder's Lua error is reported through GetBinderErrors.
		FCorvaneLuaSession();
		~FCorvaneLuaSession();
		FCorvaneLuaSession(const FCorvaneLuaSession&) = delete;
		FCorvaneLuaSession& operator=(const FCorvaneLuaSession&) = delete;

		sol::state& GetLua();
		FLuaSessionData& GetSessionData();
		const TArray<FString>& GetBinderErrors() const;

		// Runs a chunk to its end (true) or to its first error (false, with the message and a traceback).
		bool RunFile(const std::string& Path, std::string& OutError);
		bool RunString(const std::string& Code, const std::string& ChunkName, std::string& OutError);

		// The limits of every later run. A run stopped by one, or one where the script caught its error, reports
		// it through GetFiredGuard and GetGuardMessage until the next run.
		void SetGuards(const FLuaGuardLimits& Limits);
		ELuaGuard GetFiredGuard() const;
		std::string GetGuardMessage() const;

		// Takes from the session, for good, what can harm the machine; the binders' and the harness's functions stay.
		void ApplySandbox(const FLuaSandboxFolders& Folders);

	private:
		struct FImpl;
		std::unique_ptr<FImpl> Impl;
	};
}
