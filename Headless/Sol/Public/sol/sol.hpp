// The subset of sol2 v3 that the module uses, following sol2's documented API and its behaviour with all
// safeties on: registry references, tables and objects, state views, and functions bound with typed,
// checked parameters whose argument errors carry sol2's texts.
#pragma once

#include "sol/forward.hpp"

// The engine defines a function-like macro named check; set it aside while sol's own names are declared.
#pragma push_macro("check")
#undef check

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace sol
{
	enum class type : int
	{
		none = LUA_TNONE,
		lua_nil = LUA_TNIL,
		nil = lua_nil,
		string = LUA_TSTRING,
		number = LUA_TNUMBER,
		thread = LUA_TTHREAD,
		boolean = LUA_TBOOLEAN,
		function = LUA_TFUNCTION,
		userdata = LUA_TUSERDATA,
		lightuserdata = LUA_TLIGHTUSERDATA,
		table = LUA_TTABLE,
		poly = -0xFFFF,
	};

	inline type type_of(lua_State* L, int index) noexcept
	{
		return static_cast<type>(lua_type(L, index));
	}

	inline std::string type_name(lua_State* L, type t)
	{
		return lua_typename(L, static_cast<int>(t));
	}

	struct lua_nil_t
	{
	};
	inline constexpr lua_nil_t lua_nil{};
	using nil_t = lua_nil_t;
	inline constexpr const nil_t& nil = lua_nil;
	inline constexpr bool operator==(lua_nil_t, lua_nil_t) noexcept { return true; }

	struct new_table
	{
		int sequence_hint = 0;
		int map_hint = 0;

		constexpr new_table() noexcept = default;
		constexpr new_table(int sequence, int map = 0) noexcept : sequence_hint(sequence), map_hint(map) {}
	};
	inline constexpr new_table create{};

	struct this_state
	{
		lua_State* L;

		this_state(lua_State* Ls) noexcept : L(Ls) {}
		operator lua_State*() const noexcept { return L; }
		lua_State* operator->() const noexcept { return L; }
		lua_State* lua_state() const noexcept { return L; }
	};

	class error : public std::runtime_error
	{
	public:
		error(const std::string& str) : std::runtime_error("lua: error: " + str) {}
	};

	enum class lib : unsigned char
	{
		base,
		package,
		coroutine,
		string,
		os,
		math,
		table,
		debug,
		bit32,
		io,
		ffi,
		jit,
		utf8,
		count,
	};

	namespace detail
	{
		inline constexpr const char* no_space_for_reference = "not enough Lua stack space to push this reference value";
		inline constexpr const char* no_space_for_stack_reference = "not enough Lua stack space to push a single reference value";

		struct global_tag
		{
		};
	}

	// A value at a fixed position of a Lua stack; takes no registry slot.
	class stack_reference
	{
	public:
		stack_reference() noexcept = default;
		stack_reference(lua_State* Ls, int i) noexcept : L(Ls), index(lua_absindex(Ls, i)) {}
		stack_reference(lua_State* Ls, const stack_reference& r) noexcept : L(Ls), index(r.index) {}

		int push() const noexcept { return push(L); }
		int push(lua_State* Ls) const noexcept
		{
			luaL_checkstack(Ls, 1, detail::no_space_for_stack_reference);
			lua_pushvalue(L, index);
			if (Ls != L)
			{
				lua_xmove(L, Ls, 1);
			}
			return 1;
		}
		void pop() const noexcept { lua_pop(L, 1); }
		int stack_index() const noexcept { return index; }
		lua_State* lua_state() const noexcept { return L; }
		type get_type() const noexcept { return static_cast<type>(lua_type(L, index)); }
		bool valid() const noexcept
		{
			const type t = get_type();
			return t != type::lua_nil && t != type::none;
		}
		explicit operator bool() const noexcept { return valid(); }
		const void* pointer() const noexcept { return lua_topointer(L, index); }

	private:
		lua_State* L = nullptr;
		int index = 0;
	};

	// A value held through a slot of the Lua registry, released when the reference is destroyed.
	template <bool main_only>
	class basic_reference
	{
	public:
		basic_reference() noexcept = default;
		basic_reference(lua_nil_t) noexcept {}

		basic_reference(lua_State* Ls, int index = -1) : L(Ls)
		{
			luaL_checkstack(L, 1, detail::no_space_for_reference);
			lua_pushvalue(L, index);
			ref = luaL_ref(L, LUA_REGISTRYINDEX);
		}

		basic_reference(lua_State* Ls, const stack_reference& r) : L(Ls)
		{
			r.push(L);
			ref = luaL_ref(L, LUA_REGISTRYINDEX);
		}

		basic_reference(lua_State* Ls, detail::global_tag) : L(Ls)
		{
			luaL_checkstack(L, 1, detail::no_space_for_reference);
			lua_pushglobaltable(L);
			ref = luaL_ref(L, LUA_REGISTRYINDEX);
		}

		basic_reference(const basic_reference& o) : L(o.L), ref(o.copy_ref()) {}
		basic_reference(basic_reference&& o) noexcept : L(o.L), ref(o.ref)
		{
			o.L = nullptr;
			o.ref = LUA_NOREF;
		}

		basic_reference& operator=(const basic_reference& o)
		{
			if (this != &o)
			{
				const int copied = o.copy_ref();
				deref();
				L = o.L;
				ref = copied;
			}
			return *this;
		}

		basic_reference& operator=(basic_reference&& o) noexcept
		{
			if (this != &o)
			{
				deref();
				L = o.L;
				ref = o.ref;
				o.L = nullptr;
				o.ref = LUA_NOREF;
			}
			return *this;
		}

		basic_reference& operator=(lua_nil_t) noexcept
		{
			reset();
			return *this;
		}

		~basic_reference() noexcept { deref(); }

		int push() const noexcept { return push(L); }
		int push(lua_State* Ls) const noexcept
		{
			if (L == nullptr)
			{
				lua_pushnil(Ls);
				return 1;
			}
			luaL_checkstack(Ls, 1, detail::no_space_for_reference);
			lua_rawgeti(Ls, LUA_REGISTRYINDEX, ref);
			return 1;
		}
		void pop() const noexcept { lua_pop(L, 1); }
		int registry_index() const noexcept { return ref; }
		bool valid() const noexcept { return !(ref == LUA_NOREF || ref == LUA_REFNIL); }
		explicit operator bool() const noexcept { return valid(); }
		lua_State* lua_state() const noexcept { return L; }

		type get_type() const noexcept
		{
			if (L == nullptr)
			{
				return type::none;
			}
			push();
			const int t = lua_type(L, -1);
			lua_pop(L, 1);
			return static_cast<type>(t);
		}

		const void* pointer() const noexcept
		{
			push();
			const void* p = lua_topointer(L, -1);
			lua_pop(L, 1);
			return p;
		}

		void reset() noexcept
		{
			deref();
			ref = LUA_NOREF;
		}

	private:
		int copy_ref() const noexcept
		{
			if (L == nullptr || !valid())
			{
				return ref;
			}
			push();
			return luaL_ref(L, LUA_REGISTRYINDEX);
		}

		void deref() noexcept
		{
			if (L != nullptr && ref != LUA_NOREF)
			{
				luaL_unref(L, LUA_REGISTRYINDEX, ref);
			}
		}

		lua_State* L = nullptr;
		int ref = LUA_NOREF;
	};

	template <bool a, bool b>
	inline bool operator==(const basic_reference<a>& l, const basic_reference<b>& r)
	{
		if (l.lua_state() == nullptr || r.lua_state() == nullptr)
		{
			return l.lua_state() == r.lua_state();
		}
		l.push();
		r.push(l.lua_state());
		const bool equal = lua_compare(l.lua_state(), -1, -2, LUA_OPEQ) == 1;
		lua_pop(l.lua_state(), 2);
		return equal;
	}

	template <bool a>
	inline bool operator==(const basic_reference<a>& l, lua_nil_t) noexcept { return !l.valid(); }

	namespace detail
	{
		template <typename T>
		inline constexpr bool is_reference_type_v = std::is_base_of_v<reference, T> || std::is_base_of_v<main_reference, T> || std::is_base_of_v<stack_reference, T>;

		template <typename T>
		inline constexpr bool is_stack_based_v = std::is_base_of_v<stack_reference, T>;

		// The name the compiler gives a type, read from the signature of a function template, as sol2 does.
		template <typename T, typename seperator_mark = int>
		std::string ctti_get_type_name_from_sig()
		{
			std::string name = __PRETTY_FUNCTION__;
			const std::size_t start = name.find("T = ");
			if (start == std::string::npos)
			{
				return name;
			}
			std::size_t end = name.find("; seperator_mark", start);
			if (end == std::string::npos)
			{
				end = name.find(']', start);
			}
			name = name.substr(start + 4, end - start - 4);
			for (const char* removed : { "class ", "struct ", "{anonymous}::", "(anonymous namespace)::" })
			{
				for (std::size_t found = name.find(removed); found != std::string::npos; found = name.find(removed))
				{
					name.erase(found, std::strlen(removed));
				}
			}
			while (!name.empty() && name.back() == ' ')
			{
				name.pop_back();
			}
			return name;
		}

		template <typename T>
		const std::string& demangle()
		{
			static const std::string name = ctti_get_type_name_from_sig<T>();
			return name;
		}

		template <typename T>
		struct is_table : std::false_type
		{
		};

		template <bool is_global, typename base_type>
		struct is_table<basic_table_core<is_global, base_type>> : std::true_type
		{
		};

		inline constexpr const char* not_a_number = "not a numeric type";
		inline constexpr const char* not_a_number_integral = "not a numeric type that fits exactly an integer (number maybe has significant decimals)";
		inline constexpr const char* not_a_table = "value is not a table or a userdata that can behave like one";
		inline constexpr const char* constructor_check_failed = "(type check failed in constructor)";

		// Whether the value at index can be read as T, as sol2 checks it with all safeties on; when it cannot,
		// names the Lua type that was expected and the message that explains the misfit.
		template <typename T>
		bool fits(lua_State* L, int index, int& expected, const char*& message)
		{
			using value_type = std::remove_cv_t<std::remove_reference_t<T>>;
			const int actual = lua_type(L, index);
			message = "";
			if constexpr (std::is_same_v<value_type, this_state> || is_reference_type_v<value_type>)
			{
				if constexpr (is_table<value_type>::value)
				{
					expected = LUA_TTABLE;
					message = not_a_table;
					return actual == LUA_TTABLE || actual == LUA_TUSERDATA;
				}
				return true;
			}
			else if constexpr (std::is_same_v<value_type, bool>)
			{
				expected = LUA_TBOOLEAN;
				return actual == LUA_TBOOLEAN;
			}
			else if constexpr (std::is_integral_v<value_type>)
			{
				expected = LUA_TNUMBER;
				message = not_a_number_integral;
				return lua_isinteger(L, index) != 0;
			}
			else if constexpr (std::is_floating_point_v<value_type>)
			{
				expected = LUA_TNUMBER;
				message = not_a_number;
				return actual == LUA_TNUMBER;
			}
			else if constexpr (std::is_same_v<value_type, std::string> || std::is_same_v<value_type, std::string_view> || std::is_same_v<value_type, const char*>)
			{
				expected = LUA_TSTRING;
				return actual == LUA_TSTRING;
			}
			else if constexpr (std::is_same_v<value_type, lua_nil_t>)
			{
				expected = LUA_TNIL;
				return actual == LUA_TNIL || actual == LUA_TNONE;
			}
			else
			{
				static_assert(sizeof(T) == 0, "this type is not part of the supported subset");
				return false;
			}
		}

		// Raises sol2's type error for the value at index: "stack index %d, expected %s, received %s", then
		// ": <message> <aux>", or ": <aux>" when there is no message. The text is built with Lua alone so that
		// no C++ object is live when luaL_error leaves this frame; the position of the Lua caller, if any,
		// leads it. A full userdata is named by its metatable's __name.
		inline int raise_type_error(lua_State* L, int index, int expected, const char* message, const char* aux)
		{
			const int actual = lua_type(L, index);
			const char* received = lua_typename(L, actual);
			if (actual == LUA_TUSERDATA && lua_getmetatable(L, index))
			{
				lua_pushstring(L, "__name");
				lua_rawget(L, -2);
				const char* name = lua_tostring(L, -1);
				received = name ? name : "";
			}
			const char* expected_name = lua_typename(L, expected);
			if (message[0] == '\0' && aux[0] == '\0')
			{
				lua_pushfstring(L, "stack index %d, expected %s, received %s", index, expected_name, received);
			}
			else if (message[0] == '\0')
			{
				lua_pushfstring(L, "stack index %d, expected %s, received %s: %s%s", index, expected_name, received, message, aux);
			}
			else
			{
				lua_pushfstring(L, "stack index %d, expected %s, received %s: %s %s", index, expected_name, received, message, aux);
			}
			return luaL_error(L, "%s", lua_tostring(L, -1));
		}

		// A table handle is made only from a table or a userdata that can behave like one.
		template <typename Table>
		void check_table_construction(lua_State* L, int index)
		{
			int expected = LUA_TNONE;
			const char* message = "";
			if (!fits<Table>(L, index, expected, message))
			{
				raise_type_error(L, index, expected, message, constructor_check_failed);
			}
		}

		template <typename T>
		T read(lua_State* L, int index);
	}

	namespace stack
	{
		inline int push(lua_State* L, lua_nil_t) { lua_pushnil(L); return 1; }
		inline int push(lua_State* L, std::nullptr_t) { lua_pushnil(L); return 1; }
		inline int push(lua_State* L, bool value) { lua_pushboolean(L, value ? 1 : 0); return 1; }
		inline int push(lua_State* L, const char* value) { lua_pushstring(L, value); return 1; }
		inline int push(lua_State* L, const std::string& value) { lua_pushlstring(L, value.data(), value.size()); return 1; }
		inline int push(lua_State* L, std::string_view value) { lua_pushlstring(L, value.data(), value.size()); return 1; }
		inline int push(lua_State* L, const new_table& value) { lua_createtable(L, value.sequence_hint, value.map_hint); return 1; }
		inline int push(lua_State*, this_state) { return 0; }

		template <typename T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
		int push(lua_State* L, T value)
		{
			lua_pushinteger(L, static_cast<lua_Integer>(value));
			return 1;
		}

		template <typename T, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
		int push(lua_State* L, T value)
		{
			lua_pushnumber(L, static_cast<lua_Number>(value));
			return 1;
		}

		template <typename T, std::enable_if_t<detail::is_reference_type_v<std::decay_t<T>>, int> = 0>
		int push(lua_State* L, const T& value)
		{
			return value.push(L);
		}

		// Reads a value that is first checked as sol2 checks it; a misfit raises sol2's type error, which
		// reaches the panic handler when no Lua call is protecting the state.
		template <typename T>
		T get(lua_State* L, int index = -1)
		{
			using value_type = std::remove_cv_t<std::remove_reference_t<T>>;
			if constexpr (!detail::is_reference_type_v<value_type>)
			{
				int expected = LUA_TNONE;
				const char* message = "";
				if (!detail::fits<value_type>(L, index, expected, message))
				{
					detail::raise_type_error(L, index, expected, message, "");
				}
			}
			return detail::read<value_type>(L, index);
		}

		template <typename T>
		T pop(lua_State* L)
		{
			static_assert(!detail::is_stack_based_v<T>, "a stack-based value cannot be popped");
			T value = get<T>(L, -1);
			lua_pop(L, 1);
			return value;
		}

		template <typename T>
		bool check(lua_State* L, int index = -1)
		{
			int expected = LUA_TNONE;
			const char* message = "";
			return detail::fits<T>(L, index, expected, message);
		}
	}

	template <typename base_type>
	class basic_object : public base_type
	{
	public:
		using base_type::base_type;
		basic_object() noexcept = default;
		basic_object(const base_type& r) : base_type(r) {}
		basic_object(base_type&& r) noexcept : base_type(std::move(r)) {}

		// A registry reference to nil is only nil; one that refers to nothing is nothing.
		template <typename T>
		bool is() const
		{
			if constexpr (detail::is_stack_based_v<base_type>)
			{
				return stack::check<T>(this->lua_state(), this->stack_index());
			}
			else
			{
				if (this->registry_index() == LUA_REFNIL)
				{
					return std::is_same_v<std::remove_cv_t<std::remove_reference_t<T>>, lua_nil_t>;
				}
				if (this->registry_index() == LUA_NOREF)
				{
					return false;
				}
				this->push();
				const bool result = stack::check<T>(this->lua_state(), -1);
				lua_pop(this->lua_state(), 1);
				return result;
			}
		}

		template <typename T>
		T as() const
		{
			if constexpr (detail::is_stack_based_v<base_type>)
			{
				return stack::get<T>(this->lua_state(), this->stack_index());
			}
			else
			{
				this->push();
				return stack::pop<T>(this->lua_state());
			}
		}
	};

	namespace detail
	{
		template <typename T>
		struct function_traits : function_traits<decltype(&T::operator())>
		{
		};

		template <typename R, typename... Args>
		struct function_traits<R (*)(Args...)>
		{
			using return_type = R;
			using signature = R(Args...);
		};

		template <typename R, typename... Args>
		struct function_traits<R(Args...)> : function_traits<R (*)(Args...)>
		{
		};

		template <typename C, typename R, typename... Args>
		struct function_traits<R (C::*)(Args...)> : function_traits<R (*)(Args...)>
		{
		};

		template <typename C, typename R, typename... Args>
		struct function_traits<R (C::*)(Args...) const> : function_traits<R (*)(Args...)>
		{
		};

		// How many Lua stack slots a declared parameter type takes.
		template <typename T>
		inline constexpr int parameter_slots = std::is_same_v<std::remove_cv_t<std::remove_reference_t<T>>, this_state> ? 0 : 1;

		template <typename R, typename... Args>
		const std::string& argument_error_addendum()
		{
			static const std::string text = []
			{
				std::string result = "(bad argument into '" + demangle<R>() + "(";
				bool first = true;
				((result += (first ? "" : ", ") + demangle<Args>(), first = false), ...);
				return result + ")')";
			}();
			return text;
		}

		template <typename... Args, std::size_t... I>
		void stack_indices(int (&indices)[sizeof...(Args) + 1], std::index_sequence<I...>)
		{
			int next = 1;
			((indices[I] = next, next += parameter_slots<Args>), ...);
			indices[sizeof...(Args)] = next;
		}

		// Checks every declared parameter left to right before any is converted; the first misfit raises.
		template <typename R, typename... Args>
		void check_arguments(lua_State* L)
		{
			int indices[sizeof...(Args) + 1];
			stack_indices<Args...>(indices, std::index_sequence_for<Args...>{});
			int failed_index = 0;
			int expected = LUA_TNONE;
			const char* message = "";
			std::size_t position = 0;
			(void)((fits<Args>(L, indices[position], expected, message) ? (++position, true) : (failed_index = indices[position], false)) && ...);
			if (failed_index != 0)
			{
				raise_type_error(L, failed_index, expected, message, argument_error_addendum<R, Args...>().c_str());
			}
		}

		template <typename R>
		int push_result(lua_State* L, R&& result)
		{
			using value_type = std::decay_t<R>;
			if constexpr (is_stack_based_v<value_type>)
			{
				return result.push(L);
			}
			else
			{
				lua_settop(L, 0);
				return stack::push(L, std::forward<R>(result));
			}
		}

		template <typename Fx, typename R, typename... Args, std::size_t... I>
		int invoke(lua_State* L, Fx& fx, std::index_sequence<I...>)
		{
			int indices[sizeof...(Args) + 1];
			stack_indices<Args...>(indices, std::index_sequence_for<Args...>{});
			std::tuple<std::remove_cv_t<std::remove_reference_t<Args>>...> arguments(read<std::remove_cv_t<std::remove_reference_t<Args>>>(L, indices[I])...);
			if constexpr (std::is_void_v<R>)
			{
				fx(std::move(std::get<I>(arguments))...);
				lua_settop(L, 0);
				return 0;
			}
			else
			{
				return push_result(L, fx(std::move(std::get<I>(arguments))...));
			}
		}

		// The exception handler of a sol2 state: reports the exception on the error stream, as sol2 does with
		// every safety on, and pushes its text unchanged.
		inline int default_exception_handler(lua_State* L, std::string_view what)
		{
			std::cerr << "[sol2] An exception occurred: ";
			std::cerr.write(what.data(), static_cast<std::streamsize>(what.size()));
			std::cerr << std::endl;
			lua_pushlstring(L, what.data(), what.size());
			return 1;
		}

		template <typename Fx, typename Signature>
		struct function_caller;

		// The C function of every bound callable: argument checks, the call, and the conversion of an
		// escaping C++ exception into a Lua error raised after the exception is gone.
		template <typename Fx, typename R, typename... Args>
		struct function_caller<Fx, R(Args...)>
		{
			static int call(lua_State* L)
			{
				check_arguments<R, Args...>(L);
				Fx& fx = *static_cast<Fx*>(lua_touserdata(L, lua_upvalueindex(2)));
				int results = -1;
				try
				{
					results = invoke<Fx, R, Args...>(L, fx, std::index_sequence_for<Args...>{});
				}
				catch (const char* e)
				{
					default_exception_handler(L, e);
				}
				catch (const std::string& e)
				{
					default_exception_handler(L, e);
				}
				catch (const std::exception& e)
				{
					default_exception_handler(L, e.what());
				}
				catch (...)
				{
					default_exception_handler(L, "caught (...) exception");
				}
				if (results < 0)
				{
					return lua_error(L);
				}
				return results;
			}
		};

		template <typename Fx>
		int destroy_callable(lua_State* L)
		{
			static_cast<Fx*>(lua_touserdata(L, 1))->~Fx();
			return 0;
		}

		// Pushes a C closure: upvalue 1 is nil, upvalue 2 a full userdata that owns the callable and
		// destroys it when Lua collects the function.
		template <typename Fx>
		void push_function(lua_State* L, Fx&& fx)
		{
			using callable_type = std::decay_t<Fx>;
			using signature = typename function_traits<std::remove_pointer_t<callable_type>>::signature;
			static_assert(alignof(callable_type) <= alignof(void*), "callable needs more alignment than Lua gives userdata");

			luaL_checkstack(L, 3, detail::no_space_for_reference);
			lua_pushnil(L);
			void* memory = lua_newuserdatauv(L, sizeof(callable_type), 0);
			new (memory) callable_type(std::forward<Fx>(fx));
			const std::string metatable_name = "sol." + demangle<callable_type>() + ".user\xE2\x99\xBB";
			if (luaL_newmetatable(L, metatable_name.c_str()))
			{
				lua_pushcfunction(L, &destroy_callable<callable_type>);
				lua_setfield(L, -2, "__gc");
			}
			lua_setmetatable(L, -2);
			lua_pushcclosure(L, &function_caller<callable_type, signature>::call, 2);
		}

		template <typename Key>
		void push_key(lua_State* L, const Key& key)
		{
			stack::push(L, key);
		}

		template <typename Key>
		const char* key_string(const Key& key)
		{
			if constexpr (std::is_same_v<std::decay_t<Key>, std::string>)
			{
				return key.c_str();
			}
			else
			{
				return key;
			}
		}

		template <typename T, typename = void>
		struct has_call_operator : std::false_type
		{
		};

		template <typename T>
		struct has_call_operator<T, std::void_t<decltype(&T::operator())>> : std::true_type
		{
		};

		template <typename T>
		inline constexpr bool is_callable_v = !is_reference_type_v<T>
			&& (has_call_operator<T>::value || (std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>) || std::is_function_v<T>);

		template <typename Key>
		inline constexpr bool is_string_key_v = std::is_convertible_v<const Key&, const char*> || std::is_same_v<std::decay_t<Key>, std::string>;
	}

	template <typename Table, typename Key>
	class table_proxy;

	template <bool is_global, typename base_type>
	class basic_table_core : public base_type
	{
	public:
		basic_table_core() noexcept = default;
		basic_table_core(const basic_table_core&) = default;
		basic_table_core(basic_table_core&&) noexcept = default;
		basic_table_core& operator=(const basic_table_core&) = default;
		basic_table_core& operator=(basic_table_core&&) noexcept = default;

		basic_table_core(lua_State* L, int index = -1) : base_type(L, index) { detail::check_table_construction<basic_table_core>(L, index); }
		basic_table_core(lua_State* L, detail::global_tag tag) : base_type(L, tag) {}
		basic_table_core(lua_State* L, const stack_reference& r) : base_type(L, r) { check_held_value(); }
		basic_table_core(lua_State* L, const new_table& nt) : base_type(make(L, nt)) {}

		template <typename T, std::enable_if_t<std::is_base_of_v<base_type, T> && !std::is_same_v<T, basic_table_core>, int> = 0>
		basic_table_core(const T& r) : base_type(r)
		{
			if constexpr (!detail::is_table<T>::value)
			{
				check_held_value();
			}
		}

		static basic_table_core create(lua_State* L, int narr = 0, int nrec = 0)
		{
			return basic_table_core(L, new_table(narr, nrec));
		}

		template <typename Key, typename Value>
		basic_table_core& set(const Key& key, Value&& value)
		{
			lua_State* L = this->lua_state();
			if constexpr (is_global)
			{
				static_assert(detail::is_string_key_v<Key>, "globals are set by name");
				stack::push(L, std::forward<Value>(value));
				lua_setglobal(L, detail::key_string(key));
			}
			else
			{
				this->push();
				stack::push(L, std::forward<Value>(value));
				if constexpr (detail::is_string_key_v<Key>)
				{
					lua_setfield(L, -2, detail::key_string(key));
				}
				else
				{
					lua_seti(L, -2, static_cast<lua_Integer>(key));
				}
				lua_pop(L, 1);
			}
			return *this;
		}

		template <typename T, typename Key>
		T get(const Key& key) const
		{
			lua_State* L = this->lua_state();
			if constexpr (is_global)
			{
				lua_getglobal(L, detail::key_string(key));
			}
			else
			{
				this->push();
				if constexpr (detail::is_string_key_v<Key>)
				{
					lua_getfield(L, -1, detail::key_string(key));
				}
				else
				{
					lua_geti(L, -1, static_cast<lua_Integer>(key));
				}
				lua_remove(L, -2);
			}
			return stack::pop<T>(L);
		}

		template <typename Key, typename Fx>
		basic_table_core& set_function(const Key& key, Fx&& fx)
		{
			lua_State* L = this->lua_state();
			if constexpr (is_global)
			{
				detail::push_function(L, std::forward<Fx>(fx));
				lua_setglobal(L, detail::key_string(key));
			}
			else
			{
				this->push();
				detail::push_function(L, std::forward<Fx>(fx));
				lua_setfield(L, -2, detail::key_string(key));
				lua_pop(L, 1);
			}
			return *this;
		}

		template <typename Key>
		table_proxy<basic_table_core&, std::decay_t<const Key>> operator[](const Key& key)
		{
			return table_proxy<basic_table_core&, std::decay_t<const Key>>(*this, key);
		}

		// The length operator, __len included; a length that is not a Lua integer raises sol2's type error.
		std::size_t size() const
		{
			lua_State* L = this->lua_state();
			this->push();
			lua_len(L, -1);
			const std::size_t result = stack::get<std::size_t>(L, -1);
			lua_pop(L, 2);
			return result;
		}

		template <typename Fx>
		void for_each(Fx&& fx) const
		{
			lua_State* L = this->lua_state();
			this->push();
			const int table_index = lua_gettop(L);
			lua_pushnil(L);
			while (lua_next(L, table_index) != 0)
			{
				object key(L, -2);
				object value(L, -1);
				fx(key, value);
				lua_pop(L, 1);
			}
			lua_pop(L, 1);
		}

	private:
		// Checks the value this handle took from another reference where it lives: its own slot, or the top of
		// the stack while it is pushed there.
		void check_held_value()
		{
			lua_State* L = this->lua_state();
			if constexpr (detail::is_stack_based_v<base_type>)
			{
				detail::check_table_construction<basic_table_core>(L, this->stack_index());
			}
			else
			{
				this->push();
				detail::check_table_construction<basic_table_core>(L, lua_gettop(L));
				this->pop();
			}
		}

		static base_type make(lua_State* L, const new_table& nt)
		{
			lua_createtable(L, nt.sequence_hint, nt.map_hint);
			if constexpr (detail::is_stack_based_v<base_type>)
			{
				return base_type(L, -1);
			}
			else
			{
				base_type result(L, -1);
				lua_pop(L, 1);
				return result;
			}
		}
	};

	template <typename Table, typename Key>
	class table_proxy
	{
	public:
		table_proxy(Table t, const Key& k) : tbl(t), key(k) {}

		template <typename T>
		table_proxy& operator=(T&& value)
		{
			if constexpr (detail::is_callable_v<std::decay_t<T>>)
			{
				tbl.set_function(key, std::forward<T>(value));
			}
			else
			{
				tbl.set(key, std::forward<T>(value));
			}
			return *this;
		}

		template <typename T>
		T get() const
		{
			return tbl.template get<T>(key);
		}

		template <typename T>
		operator T() const
		{
			return get<T>();
		}

	private:
		Table tbl;
		Key key;
	};

	class state_view
	{
	public:
		state_view(lua_State* Ls) : L(Ls), reg(Ls, LUA_REGISTRYINDEX), global(Ls, detail::global_tag{}) {}
		state_view(this_state Ls) : state_view(Ls.L) {}

		lua_State* lua_state() const noexcept { return L; }
		operator lua_State*() const noexcept { return L; }

		global_table globals() const { return global; }
		table registry() const { return reg; }

		table create_table(int narr = 0, int nrec = 0) { return table::create(L, narr, nrec); }

		template <typename Key, typename Fx>
		state_view& set_function(const Key& key, Fx&& fx)
		{
			global.set_function(key, std::forward<Fx>(fx));
			return *this;
		}

		template <typename Key, typename Value>
		state_view& set(const Key& key, Value&& value)
		{
			global.set(key, std::forward<Value>(value));
			return *this;
		}

		template <typename T, typename Key>
		T get(const Key& key) const
		{
			return global.template get<T>(key);
		}

		template <typename Key>
		table_proxy<global_table&, std::decay_t<const Key>> operator[](const Key& key)
		{
			return table_proxy<global_table&, std::decay_t<const Key>>(global, key);
		}

		template <typename... Libs>
		void open_libraries(Libs... libs)
		{
			if constexpr (sizeof...(Libs) == 0)
			{
				luaL_openlibs(L);
			}
			else
			{
				(open_library(libs), ...);
			}
		}

	private:
		void open_library(lib library)
		{
			struct entry
			{
				const char* name;
				lua_CFunction open;
			};
			entry chosen{ nullptr, nullptr };
			switch (library)
			{
			case lib::base: chosen = { "base", luaopen_base }; break;
			case lib::package: chosen = { LUA_LOADLIBNAME, luaopen_package }; break;
			case lib::coroutine: chosen = { LUA_COLIBNAME, luaopen_coroutine }; break;
			case lib::string: chosen = { LUA_STRLIBNAME, luaopen_string }; break;
			case lib::os: chosen = { LUA_OSLIBNAME, luaopen_os }; break;
			case lib::math: chosen = { LUA_MATHLIBNAME, luaopen_math }; break;
			case lib::table: chosen = { LUA_TABLIBNAME, luaopen_table }; break;
			case lib::debug: chosen = { LUA_DBLIBNAME, luaopen_debug }; break;
			case lib::io: chosen = { LUA_IOLIBNAME, luaopen_io }; break;
			case lib::utf8: chosen = { LUA_UTF8LIBNAME, luaopen_utf8 }; break;
			default: return;
			}
			luaL_requiref(L, chosen.name, chosen.open, 1);
			lua_pop(L, 1);
		}

		lua_State* L;
		table reg;
		global_table global;
	};

	namespace detail
	{
		struct state_deleter
		{
			void operator()(lua_State* L) const { lua_close(L); }
		};

		// The globals under which a sol2 state keeps the message handler of its protected calls and its
		// exception handler.
		inline constexpr const char* default_handler_name = "sol.\xF0\x9F\x94\xA9";
		inline constexpr const char* default_exception_handler_name = "sol.\xE2\x98\xA2\xE2\x98\xA2";

		// The message handler: the message when it is a string, followed by Lua's traceback.
		inline int default_traceback_error_handler(lua_State* L)
		{
			const char* message = lua_type(L, 1) == LUA_TSTRING ? lua_tostring(L, 1) : "An unknown error has triggered the default error handler";
			luaL_traceback(L, L, message, 1);
			return 1;
		}
	}

	// Clears the stack, reports a text on the error stream and throws it as sol::error; Lua aborts if a panic
	// handler returns.
	inline int default_at_panic(lua_State* L)
	{
		std::size_t length = 0;
		const char* message = lua_tolstring(L, -1, &length);
		if (message == nullptr)
		{
			lua_settop(L, 0);
			throw error(std::string("An unexpected error occurred and panic has been invoked"));
		}
		std::string text(message, length);
		lua_settop(L, 0);
		std::cerr << "[sol2] An error occurred and panic has been invoked: " << text << std::endl;
		throw error(text);
	}

	// Owns a new Lua state; the view's registry slots are released before the state closes.
	class state : private std::unique_ptr<lua_State, detail::state_deleter>, public state_view
	{
		using unique_base = std::unique_ptr<lua_State, detail::state_deleter>;

	public:
		state(lua_CFunction panic = default_at_panic) : unique_base(make_state(luaL_newstate(), panic)), state_view(unique_base::get()) {}
		// Every allocation of the state goes through alfunc, with alpointer as its first argument.
		state(lua_CFunction panic, lua_Alloc alfunc, void* alpointer = nullptr)
			: unique_base(make_state(lua_newstate(alfunc, alpointer), panic)), state_view(unique_base::get())
		{
		}
		state(const state&) = delete;
		state& operator=(const state&) = delete;

		using state_view::get;

	private:
		static lua_State* make_state(lua_State* L, lua_CFunction panic)
		{
			if (L == nullptr)
			{
				throw std::bad_alloc();
			}
			lua_atpanic(L, panic);
			lua_pushcfunction(L, &detail::default_traceback_error_handler);
			lua_setglobal(L, detail::default_handler_name);
			int (*exception_handler)(lua_State*, std::string_view) = &detail::default_exception_handler;
			void* storage = nullptr;
			std::memcpy(&storage, &exception_handler, sizeof(exception_handler));
			lua_pushlightuserdata(L, storage);
			lua_setglobal(L, detail::default_exception_handler_name);
			return L;
		}
	};

	namespace detail
	{
		// Converts a value that has already passed its check; reference types are made from the slot.
		template <typename T>
		T read(lua_State* L, int index)
		{
			if constexpr (std::is_same_v<T, bool>)
			{
				return lua_toboolean(L, index) != 0;
			}
			else if constexpr (std::is_integral_v<T>)
			{
				return static_cast<T>(lua_tointeger(L, index));
			}
			else if constexpr (std::is_floating_point_v<T>)
			{
				return static_cast<T>(lua_tonumber(L, index));
			}
			else if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, std::string_view>)
			{
				std::size_t length = 0;
				const char* text = lua_tolstring(L, index, &length);
				return T(text, length);
			}
			else if constexpr (std::is_same_v<T, const char*>)
			{
				return lua_tostring(L, index);
			}
			else if constexpr (std::is_same_v<T, this_state>)
			{
				return this_state(L);
			}
			else if constexpr (std::is_same_v<T, lua_nil_t>)
			{
				return lua_nil;
			}
			else
			{
				return T(L, index);
			}
		}
	}

	template <typename T>
	object make_object(lua_State* L, T&& value)
	{
		stack::push(L, std::forward<T>(value));
		object result(L, -1);
		lua_pop(L, 1);
		return result;
	}
}

#pragma pop_macro("check")
