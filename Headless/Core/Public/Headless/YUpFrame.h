// Harness-only: the change of frame between the engine and the Y-up, right-handed world of glTF and three.js.
//
// The engine measures in centimetres with X forward, Y right and Z up (left-handed); glTF measures in metres
// with Y up (right-handed). Swapping Y and Z turns one into the other without mirroring the scene: the
// engine's right (+Y) becomes glTF's +Z, which is right of +X when +Y is up. The swap is a reflection of the
// coordinates, so a rotation's axis (a pseudo-vector) changes sign as well, while triangles keep their index
// order: the engine's clockwise front faces come out counter-clockwise, as glTF wants them.
#pragma once

#include "Math/Quat.h"
#include "Math/Vector.h"

namespace UE::Headless
{
	inline constexpr float MetresPerCentimetre = 0.01f;
	inline constexpr float CentimetresPerMetre = 100.0f;

	// A point: centimetres, Z up -> metres, Y up.
	[[nodiscard]] inline FVector3f ToYUpPoint(const FVector3f& Point)
	{
		return FVector3f(Point.X, Point.Z, Point.Y) * MetresPerCentimetre;
	}

	[[nodiscard]] inline FVector3f FromYUpPoint(const FVector3f& Point)
	{
		return FVector3f(Point.X, Point.Z, Point.Y) * CentimetresPerMetre;
	}

	// A direction (a normal) or a per-axis scale: the axes are swapped, nothing is scaled. The swap is its own
	// inverse, so it serves both ways.
	[[nodiscard]] inline FVector3f SwapYUpAxes(const FVector3f& Vector)
	{
		return FVector3f(Vector.X, Vector.Z, Vector.Y);
	}

	// A rotation. Also its own inverse.
	[[nodiscard]] inline FQuat4f SwapYUpRotation(const FQuat4f& Rotation)
	{
		return FQuat4f(-Rotation.X, -Rotation.Z, -Rotation.Y, Rotation.W);
	}
}
