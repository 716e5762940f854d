"""A program of a user, which must pass mypy --strict: an interface, its implementation, a discovery, and values."""
import uuid
from typing import Any, Mapping, Optional, Tuple

import zrcore
from zrcore import kinds

GREETER = uuid.UUID("0d5e0a0b-4f5e-4a3c-9d4b-1f9d9f3a1c11")


class IGreeter(zrcore.Interface):
    iid = uuid.UUID("7b1f6e0e-9b0d-4b6d-8a51-6a3b1f0c2d22")

    @zrcore.operation(kinds.string, kinds.uint16, kinds.variant, zrcore.out(kinds.string), zrcore.out(kinds.variant))
    def Greet(self, name: str, times: int, value: Any) -> Tuple[str, Any]:
        raise NotImplementedError


class Greeter:
    def Greet(self, name: str, times: int, value: Any) -> Tuple[str, Any]:
        return f"Hello, {name}! " * times, value


class Greeters(zrcore.Discovery):
    def component(self, class_id: uuid.UUID) -> zrcore.Component:
        return (lambda _class, _interface: zrcore.implement(Greeter(), IGreeter)) if class_id == GREETER else None

    def class_id(self, name: str) -> Optional[uuid.UUID]:
        return GREETER if name == "Sample.Greeter" else None

    def configuration(self, class_id: uuid.UUID, name: str) -> Optional[Mapping[str, Any]]:
        return {"times": zrcore.ui2(2)} if name == "greetings" else None


def main() -> None:
    with zrcore.library():
        registration = zrcore.add_discovery(Greeters())
        greetings = zrcore.configuration("Sample.Greeter", "greetings")
        times: int = greetings.get("times", 1) if greetings is not None else 1
        with zrcore.create("Sample.Greeter", IGreeter) as greeter:
            text, value = greeter.Greet("world", times, zrcore.r4(0.5))
            print(text, value)
            try:
                greeter.Greet("world", 1 << 16, None)
            except zrcore.Error as error:
                print(error.name, error.code == zrcore.Code.INVALID_ARGUMENTS)
        registration.remove()
    table = zrcore.Array.of([[1, 2], [3, 4]], zrcore.Type.I4)
    numbers: memoryview = table.view()
    print(table.astype(zrcore.Type.R8).tolist(), numbers.tolist(), zrcore.convert("5", zrcore.Type.I4))


if __name__ == "__main__":
    main()
