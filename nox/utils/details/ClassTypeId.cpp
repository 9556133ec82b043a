#include <nox/utils/details/ClassTypeId.h>

#include <nox/utils/Quaternion.h>
#include <nox/utils/Vector2.h>
#include <nox/utils/Vector3.h>

// A function-local id per type: thread-safe first use, and no dependence on the order
// in which the library's static objects are built.
#define NOX_DETAILS_DEFINE_CLASS_TYPE_ID(Type, text) \
  template <>                                        \
  const Uuid& getClassTypeId<Type>() {               \
    static const Uuid id = Uuid::create(text);       \
    return id;                                       \
  }

namespace nox::utils::details {

NOX_DETAILS_DEFINE_CLASS_TYPE_ID(int, "1bc45061-9b2d-47a0-91e4-366d093a370b")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(std::int64_t, "6f6dce75-d95d-4da8-944c-94fece5c8e4d")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(double, "897618b0-7479-4a89-8ab7-23fa13f16316")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(float, "8e6fc8dd-2cee-4bc0-b1d8-87142e68d777")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(bool, "23aa4943-a9fb-4472-a4f0-35a0bf88f41e")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(String, "ad7b0b58-c164-4d3f-be4a-327ace48624c")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(Vector3<double>, "f31f94dc-07a5-462f-b055-7be3506a7b36")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(Vector2<double>, "848ef37e-0b2f-4805-85b3-f0b3b14f0fd0")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(Quaternion<double>, "509e70d9-c3f4-48e6-8072-614b6805fa48")
NOX_DETAILS_DEFINE_CLASS_TYPE_ID(DynamicObject, "0775eb00-e4e6-4c6a-83fb-a970e0cbc092")

}  // namespace nox::utils::details
