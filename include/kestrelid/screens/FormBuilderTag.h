#pragma once

namespace kestrelid {

/// Says that a form builder, not code, makes a controller. Controllers refuse it: see there.
struct FormBuilderTag {};

}  // namespace kestrelid
