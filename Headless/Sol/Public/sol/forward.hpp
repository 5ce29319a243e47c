// The part of sol2 v3's API that this build carries: declarations and aliases under sol2's own names.
#pragma once

#include <lua.hpp>

namespace sol
{
	class stack_reference;
	template <bool b>
	class basic_reference;
	using reference = basic_reference<false>;
	using main_reference = basic_reference<true>;

	template <bool is_global, typename base_type>
	class basic_table_core;
	using table = basic_table_core<false, reference>;
	using global_table = basic_table_core<true, reference>;
	using stack_table = basic_table_core<false, stack_reference>;

	template <typename base_type>
	class basic_object;
	using object = basic_object<reference>;
	using stack_object = basic_object<stack_reference>;

	class state_view;
	class state;
	struct this_state;
	struct lua_nil_t;
	struct new_table;
	class error;
}
