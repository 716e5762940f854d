"""Values: round trips through variants, explicit types, conversion, comparison, and numbers that don't fit."""
import copy
import ctypes
import datetime
import pickle
import unittest
import uuid
from unittest import mock

import zrcore
from zrcore import Array, Error, Ref, Sref, Type, Typed, _handles, _variant, raw

ROUND_TRIPS = [
    None, True, False, 0, -1 << 63, (1 << 63) - 1, 1 << 63, (1 << 64) - 1, 0.1, float("inf"), "", "zero \0 inside",
    "astral \U0001F30D", "unpaired \ud800", b"", b"zero \0 inside", uuid.UUID("00112233-4455-6677-8899-aabbccddeeff"),
    Ref(1, 2, 3, 4, 5, (1 << 32) - 1), Sref(Ref(7)), Sref(None, "text"), Sref(Ref(7), "text"), Sref(),
    datetime.datetime(1601, 1, 1), datetime.datetime.max, datetime.timedelta(days=-3, microseconds=7), zrcore.cy(-5),
    zrcore.char32("\U0001F30D"), zrcore.opaque((1 << 64) - 1),
    zrcore.date_time(1), zrcore.date_time(-10), zrcore.date_time((1 << 63) - 1), zrcore.time_span(-1),
]

# The explicit integer types with their least and greatest numbers.
INTEGERS = [
    (zrcore.i1, -128, 127), (zrcore.i2, -32768, 32767), (zrcore.i4, -1 << 31, (1 << 31) - 1),
    (zrcore.i8, -1 << 63, (1 << 63) - 1), (zrcore.ui1, 0, 255), (zrcore.ui2, 0, 65535),
    (zrcore.ui4, 0, (1 << 32) - 1), (zrcore.ui8, 0, (1 << 64) - 1), (zrcore.byte, 0, 255), (zrcore.word, 0, 65535),
    (zrcore.dword, 0, (1 << 32) - 1), (zrcore.qword, 0, (1 << 64) - 1), (zrcore.cy, -1 << 63, (1 << 63) - 1),
    (zrcore.opaque, 0, (1 << 64) - 1), (zrcore.char32, 0, (1 << 32) - 1),
    (zrcore.date_time, -1 << 63, (1 << 63) - 1), (zrcore.time_span, -1 << 63, (1 << 63) - 1),
]

# What no variant can hold, and the exception for it.
REFUSED = [
    (lambda: zrcore.r4(1e300), Error), (lambda: zrcore.r8(10 ** 400), Error), (lambda: zrcore.i4(10 ** 5000), Error),
    (lambda: zrcore.i4("5"), TypeError), (lambda: zrcore.i4(2.0), TypeError), (lambda: zrcore.r8("5"), TypeError),
    (lambda: zrcore.r8(None), TypeError), (lambda: Typed(Type.BOOL, 2), Error),
    (lambda: Typed(Type.BOOL, "x"), TypeError),
    (lambda: Typed(Type.STR, "x"), TypeError), (lambda: zrcore.char32("ab"), TypeError),
    (lambda: zrcore.i4(zrcore.i8(5)), TypeError), (lambda: _variant.Variant(1 << 64), Error),
    (lambda: _variant.Variant((-1 << 63) - 1), Error), (lambda: _variant.Variant(object()), TypeError),
    (lambda: _variant.Variant(datetime.datetime(1600, 12, 31)), Error),
    (lambda: _variant.Variant(datetime.datetime(2000, 1, 1, tzinfo=datetime.timezone.utc)), ValueError),
    (lambda: _variant.Variant(datetime.timedelta.max), Error), (lambda: _variant.Variant(Ref(1 << 32)), Error),
    (lambda: _variant.Variant(Ref(-1)), Error), (lambda: _variant.Variant(Ref(10 ** 5000)), Error),
    (lambda: _variant.Variant(Sref(Ref(0, 1 << 32), "x")), Error),
    (lambda: _variant.Variant(Sref(None, 5)), TypeError), (lambda: zrcore.convert(1, 99), ValueError),
    (lambda: zrcore.convert("5", "I4"), ValueError),
    (lambda: zrcore.convert(10 ** 5000, Type.I8), Error),
]

CONVERSIONS = [
    ("0x10", Type.I4, 16), (True, Type.STR, "TRUE"), (2.9, Type.UI1, 2), (b"\1\2", Type.UI4, 0x201), ("", Type.I8, 0),
    (zrcore.qword(10), Type.DATETIME, datetime.datetime(1601, 1, 1, 0, 0, 0, 1)),   # not taken for an address
    ("1.2.3.4.5.6", Type.REF, Ref(1, 2, 3, 4, 5, 6)), (Ref(1), Type.STR, "1.0.0.0.0.0"),
    ("{00112233-4455-6677-8899-AABBCCDDEEFF}", Type.UUID, uuid.UUID("00112233-4455-6677-8899-aabbccddeeff")),
    ("9223372036854775807", Type.I8, (1 << 63) - 1), ("-9223372036854775808d", Type.I8, -1 << 63),
    ("0xFFFFFFFFFFFFFFFF", Type.UI8, (1 << 64) - 1), (-2.0 ** 63, Type.I8, -1 << 63),
    ("9.223372036854775808e18", Type.R8, 2.0 ** 63), ("9223372036854775807", Type.R8, 2.0 ** 63),
    (None, Type.EMPTY, None), (zrcore.r4(0.1), Type.R4, zrcore.r4(0.1).value),
]

FAILURES = [
    (300, Type.UI1, "INVALID_ARGUMENTS"), (-1, Type.UI8, "INVALID_ARGUMENTS"), (None, Type.STR, "NOT_SUPPORTED"),
    (float("nan"), Type.I8, "INVALID_ARGUMENTS"), ("x", Type.I4, "FAILED"), (1 << 64, Type.STR, "INVALID_ARGUMENTS"),
    (1, Type.EMPTY, "INVALID_ARGUMENTS"), (zrcore.i8(-1), Type.QWORD, "INVALID_ARGUMENTS"),
    # The library lets these pass, with another number as the result.
    (2.0 ** 63, Type.I8, "INVALID_ARGUMENTS"), ((1 << 63) + 5, Type.I8, "INVALID_ARGUMENTS"),
    (2.0 ** 64, Type.UI8, "INVALID_ARGUMENTS"), (1e30, Type.CY, "INVALID_ARGUMENTS"),
    (float("nan"), Type.DATETIME, "INVALID_ARGUMENTS"), (zrcore.ui8(1 << 63), Type.TIME, "INVALID_ARGUMENTS"),
    ("9223372036854775808", Type.I8, "INVALID_ARGUMENTS"), ("-9223372036854775809", Type.CY, "INVALID_ARGUMENTS"),
    (" 18446744073709551616d", Type.UI8, "INVALID_ARGUMENTS"), ("0x8000000000000000", Type.I8, "INVALID_ARGUMENTS"),
    ("0x10000000000000000", Type.QWORD, "INVALID_ARGUMENTS"), ("0xFFFFFFFFFFFFFFFF", Type.R8, "INVALID_ARGUMENTS"),
]

EQUAL = [
    (zrcore.i4(5), zrcore.i4(5), True), (zrcore.i4(5), 5, False), (uuid.UUID(int=5), uuid.UUID(int=5), True),
    (b"", b"", True), (b"", b"x", False), (b"x", b"", False), (None, None, True), (Sref(), Sref(), True),
    (Sref(Ref(1)), Sref(None, "1.0.0.0.0.0"), True), (Sref(Ref(1)), Sref(None, "x"), False),
    (Array.of([1], Type.I4), Array.of([1], Type.I4), True), (Array.of([1], Type.I4), Array.of([1, 2], Type.I4), False),
]


class ValueTest(unittest.TestCase):
    def test_values_come_back_from_a_variant(self):
        for value in ROUND_TRIPS:
            with self.subTest(value=value), _variant.Variant(value) as record:
                back = _variant.read(record)
                self.assertEqual((type(back), back), (type(value), value))

    def test_values_by_reference_are_read_through_their_address(self):
        for value in ROUND_TRIPS:
            with self.subTest(value=value), _variant.Variant(value) as record:
                reference = raw.ZRVARIANT(Type.VARIANT | raw.ZR_VT_BYREF)
                reference.Value.address = ctypes.addressof(record)
                self.assertEqual(_variant.read(reference), value)
        for tag in (Type.STR | raw.ZR_VT_ARRAY | raw.ZR_VT_BYREF, Type.I4 | raw.ZR_VT_ARRAY, Type.VARIANT, 16):
            with self.subTest(tag=tag):
                self.assertRaises(Error, _variant.read, raw.ZRVARIANT(tag))   # null, or without a value

    def test_subclasses_and_integers_of_other_types_are_written_as_their_base(self):
        class Index:
            def __index__(self):
                return 7

        class Text(str):
            pass
        for value, expected in [(Type.I4, 4), (Index(), 7), (Text("x"), "x"), (memoryview(b"x"), b"x")]:
            with self.subTest(value=value), _variant.Variant(value) as record:
                self.assertEqual(_variant.read(record), expected)

    def test_explicit_integers_hold_their_range_and_nothing_else(self):
        for make, least, most in INTEGERS:
            for number in (least, most):
                with self.subTest(make.__name__, number=number), _variant.Variant(make(number)) as record:
                    self.assertEqual(record.Type, make(number).type)
                    back = _variant.read(record)
                    self.assertIn(number, (back, getattr(back, "value", None)))
            for number in (least - 1, most + 1):
                with self.subTest(make.__name__, number=number), self.assertRaises(Error) as caught:
                    make(number)
                self.assertEqual(caught.exception.name, "ZR_R_INVALID_ARGUMENTS")

    def test_what_does_not_fit_is_refused(self):
        for number, (make, expected) in enumerate(REFUSED):
            with self.subTest(number=number):
                self.assertRaises(expected, make)
        with mock.patch.object(_handles, "MOST_BYTES", 7):   # a length above 32 bits would be truncated
            for value in ("four", b"8 bytes.", Sref(None, "four")):
                with self.subTest(value=value):
                    self.assertRaises(Error, _variant.Variant, value)

    def test_typed_values_are_values(self):
        for value in (zrcore.i4(5), zrcore.date_time(datetime.datetime(2000, 1, 1)), zrcore.r4(0.1)):
            self.assertEqual((copy.copy(value), pickle.loads(pickle.dumps(value)), hash(value)),
                             (value, value, hash(copy.copy(value))))
            with self.assertRaises(AttributeError):
                value.value = 6
        self.assertNotEqual(zrcore.i4(5), zrcore.i8(5))
        self.assertEqual(repr([zrcore.i4(5), zrcore.date_time(1)]), "[i4(5), date_time(1)]")

    def test_conversions(self):
        for value, target, expected in CONVERSIONS:
            with self.subTest(value=value, target=target.name):
                back = zrcore.convert(value, target)
                self.assertEqual((type(back), back), (type(expected), expected))
        for value, target, name in FAILURES:
            with self.subTest(value=value, target=target.name), self.assertRaises(Error) as caught:
                zrcore.convert(value, target)
            self.assertEqual(caught.exception.name, "ZR_R_" + name)

    def test_comparison_needs_the_same_type(self):
        for left, right, expected in EQUAL:
            with self.subTest(left=left, right=right):
                self.assertEqual(zrcore.compare(left, right), expected)

    def test_an_error_has_code_name_and_text(self):
        error = pickle.loads(pickle.dumps(Error(zrcore.Code.NOT_SUPPORTED, "why")))
        self.assertEqual((error.code, error.name, error.text), (zrcore.Code.NOT_SUPPORTED, "ZR_R_NOT_SUPPORTED", "why"))
        self.assertEqual(str(Error(-5000, "of a module")), "0xFFFFEC78: of a module")


if __name__ == "__main__":
    unittest.main()
