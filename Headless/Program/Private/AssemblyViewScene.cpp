#include "Headless/AssemblyViewScene.h"

#include "Engine/StaticMesh.h"
#include "Headless/StaticMeshGeometry.h"
#include "Headless/YUpFrame.h"
#include "Templates/Casts.h"

#include <algorithm>

namespace UE::Headless
{
	namespace
	{
		void Append(std::vector<float>& Numbers, const FVector3f& Vector)
		{
			Numbers.insert(Numbers.end(), { Vector.X, Vector.Y, Vector.Z });
		}

		FVector3f VectorAt(const std::vector<float>& Numbers, size_t Index)
		{
			return FVector3f(Numbers[Index], Numbers[Index + 1], Numbers[Index + 2]);
		}

		void Grow(FVector3f& Min, FVector3f& Max, const FVector3f& Point)
		{
			Min = FVector3f(std::min(Min.X, Point.X), std::min(Min.Y, Point.Y), std::min(Min.Z, Point.Z));
			Max = FVector3f(std::max(Max.X, Point.X), std::max(Max.Y, Point.Y), std::max(Max.Z, Point.Z));
		}

		void AddGeometry(FViewPart& Part, const FStaticMeshGeometry& Geometry)
		{
			for (const FVector3f& Position : Geometry.Positions)
			{
				Append(Part.Positions, ToYUpPoint(Position));
			}
			// Normals that are not one per position cannot be matched to vertices; the page derives its own then.
			if (Geometry.Normals.Num() == Geometry.Positions.Num())
			{
				for (const FVector3f& Normal : Geometry.Normals)
				{
					Append(Part.Normals, SwapYUpAxes(Normal));
				}
			}
			// The change of frame is a reflection, which turns the engine's clockwise front faces into the
			// counter-clockwise ones of three.js without reordering a triangle's corners.
			for (const FMeshTriangle& Triangle : Geometry.Triangles)
			{
				if (!Triangle.IsDegenerate(Geometry.Positions))
				{
					Part.Indices.insert(Part.Indices.end(), { (uint32_t)Triangle.VertexIndices[0], (uint32_t)Triangle.VertexIndices[1],
						(uint32_t)Triangle.VertexIndices[2] });
				}
			}
		}

		void AddInstance(FViewPart& Part, const FTransform3f& Transform)
		{
			const FQuat4f Rotation = SwapYUpRotation(Transform.GetRotation());
			Append(Part.Instances, ToYUpPoint(Transform.GetTranslation()));
			Part.Instances.insert(Part.Instances.end(), { Rotation.X, Rotation.Y, Rotation.Z, Rotation.W });
			Append(Part.Instances, SwapYUpAxes(Transform.GetScale3D()));
		}

		// The box of the part's drawn corners, placed at each instance: each corner of the part's own box goes
		// where the instance's scale, rotation and translation take it.
		void GrowByPart(FAssemblyView& View, const FViewPart& Part)
		{
			if (Part.Indices.empty())
			{
				return;
			}
			FVector3f Min = VectorAt(Part.Positions, 3 * (size_t)Part.Indices[0]);
			FVector3f Max = Min;
			for (const uint32_t Index : Part.Indices)
			{
				Grow(Min, Max, VectorAt(Part.Positions, 3 * (size_t)Index));
			}
			for (size_t Offset = 0; Offset < Part.Instances.size(); Offset += FloatsPerViewInstance)
			{
				const FVector3f Translation = VectorAt(Part.Instances, Offset);
				const FQuat4f Rotation(Part.Instances[Offset + 3], Part.Instances[Offset + 4], Part.Instances[Offset + 5], Part.Instances[Offset + 6]);
				const FVector3f Scale = VectorAt(Part.Instances, Offset + 7);
				for (int32 Corner = 0; Corner < 8; ++Corner)
				{
					const FVector3f Local((Corner & 1) ? Max.X : Min.X, (Corner & 2) ? Max.Y : Min.Y, (Corner & 4) ? Max.Z : Min.Z);
					const FVector3f Placed = Translation + Rotation.RotateVector(Local * Scale);
					if (!View.HasBounds())
					{
						View.BoundsMin = View.BoundsMax = Placed;
					}
					Grow(View.BoundsMin, View.BoundsMax, Placed);
				}
			}
		}
	}

	FAssemblyView MakeAssemblyView(const UStaticMesh& Mesh)
	{
		FAssemblyView View;
		View.MeshPath = Mesh.GetPathName();
		View.bIsAssembly = Mesh.IsNaniteAssembly();
		if (!View.bIsAssembly)
		{
			FViewPart& Part = View.Parts.emplace_back();
			Part.MeshPath = View.MeshPath;
			Part.bLoaded = true;
			AddGeometry(Part, GetMeshGeometry(Mesh));
			AddInstance(Part, FTransform3f::Identity);
			GrowByPart(View, Part);
			return View;
		}

		const FNaniteAssemblyData& Data = Mesh.GetNaniteSettings().NaniteAssemblyData;
		View.NumNodes = Data.Nodes.Num();
		View.Parts.resize(Data.Parts.Num());
		for (int32 PartIndex = 0; PartIndex < Data.Parts.Num(); ++PartIndex)
		{
			FViewPart& Part = View.Parts[PartIndex];
			const FSoftObjectPath& Path = Data.Parts[PartIndex].MeshObjectPath;
			Part.MeshPath = Path.ToString();
			if (const UStaticMesh* PartMesh = Cast<UStaticMesh>(Path.TryLoad()))
			{
				Part.bLoaded = true;
				AddGeometry(Part, GetMeshGeometry(*PartMesh));
			}
		}
		// A bone-relative node has no skeleton to follow in a static mesh: it stands where its transform puts it.
		for (const FNaniteAssemblyNode& Node : Data.Nodes)
		{
			if (Node.PartIndex >= 0 && Node.PartIndex < Data.Parts.Num())
			{
				AddInstance(View.Parts[Node.PartIndex], Node.Transform);
			}
		}
		for (const FViewPart& Part : View.Parts)
		{
			GrowByPart(View, Part);
		}
		return View;
	}
}
