"""Arrays: elements of every kind, views and their lifetime, the access flag, conversion, and shapes that don't fit."""
import copy
import ctypes
import datetime
import gc
import sys
import unittest
import uuid

import zrcore
from zrcore import Array, Error, Ref, Sref, Type, _variant

try:
    import numpy
except ImportError:
    numpy = None

ELEMENTS = [
    (Type.BOOL, True), (Type.I1, -128), (Type.I2, -5), (Type.I4, -6), (Type.I8, -1 << 63), (Type.UI1, 255),
    (Type.UI2, 65535), (Type.UI4, 7), (Type.UI8, (1 << 64) - 1), (Type.R4, 0.5), (Type.R8, 0.1), (Type.BYTE, 8),
    (Type.WORD, 9), (Type.DWORD, 10), (Type.QWORD, 11), (Type.CY, zrcore.cy(-4)), (Type.CHAR32, zrcore.char32("é")),
    (Type.DATETIME, datetime.datetime(2020, 1, 2)), (Type.DATETIME, zrcore.date_time(1)),
    (Type.TIME, datetime.timedelta(hours=1)), (Type.STR, "é"), (Type.BLOB, b"\0\1"), (Type.BLOB, b""),
    (Type.UUID, uuid.UUID(int=5)), (Type.REF, Ref(1, 2)), (Type.SREF, Sref(None, "x")), (Type.SREF, Sref()),
    (Type.VARIANT, "mixed"), (Type.VARIANT, Array.of([1, 2], Type.I4)), (Type.UNKNOWN, None),
]

# A type, and elements that it refuses.
REFUSED = [
    (Type.UI1, 256, Error), (Type.I1, -129, Error), (Type.UI8, -1, Error), (Type.I8, 1 << 63, Error),
    (Type.R4, 1e300, Error), (Type.I4, 1.0, TypeError), (Type.I4, "1", TypeError), (Type.I4, None, TypeError),
    (Type.BOOL, 2, Error), (Type.BOOL, "x", TypeError), (Type.I4, zrcore.i8(1), TypeError), (Type.STR, 1, TypeError),
    (Type.UUID, "x", TypeError), (Type.REF, (1, 2, 3, 4, 5, 6), (TypeError, ValueError)), (Type.UNKNOWN, 5, TypeError),
    (Type.DATETIME, datetime.datetime(1, 1, 1), Error), (Type.VARIANT, object(), TypeError),
]

# Conversions for which the library returns wrong elements, and some beside the limits that are right.
WIDE = [
    (Type.R8, [1.5, 2.0 ** 63], Type.I8, Error), (Type.R8, [-2.0 ** 63, -1.5], Type.I8, [-1 << 63, -1]),
    (Type.R8, [2.0 ** 64], Type.UI8, Error), (Type.R8, [2.0 ** 63], Type.UI8, [1 << 63]),
    (Type.R8, [1e30], Type.CY, Error), (Type.R8, [float("nan")], Type.TIME, Error),
    (Type.R4, [2.0 ** 63], Type.I8, Error),
    (Type.UI8, [(1 << 63) + 5], Type.I8, Error), (Type.UI8, [(1 << 63) + 5], Type.DATETIME, Error),
    (Type.UI8, [(1 << 63) - 1], Type.I8, [(1 << 63) - 1]), (Type.CY, [zrcore.cy(-1)], Type.UI8, Error),
    (Type.TIME, [zrcore.time_span(-10)], Type.QWORD, Error), (Type.STR, ["9223372036854775808"], Type.I8, Error),
    (Type.STR, ["9223372036854775807", "-1"], Type.I8, [(1 << 63) - 1, -1]),
    (Type.STR, ["18446744073709551616"], Type.UI8, Error),
    (Type.VARIANT, [zrcore.qword(10), 20], Type.DATETIME,   # the library would read the address 10
     [datetime.datetime(1601, 1, 1, 0, 0, 0, 1), datetime.datetime(1601, 1, 1, 0, 0, 0, 2)]),
    (Type.VARIANT, [1, 2.0 ** 63], Type.I8, Error),
]


class ArrayTest(unittest.TestCase):
    def test_elements_of_every_kind_come_back(self):
        for kind, value in ELEMENTS:
            with self.subTest(kind.name, value=value):
                array = Array.of([[value], [value]], kind, lower_bounds=(-1, 7))
                self.assertEqual(array.tolist(), [[value], [value]])
                array[0, 7] = value
                array[0, 7] = value   # releases what the element had
                self.assertEqual(array[0, 7], value)
                with _variant.Variant(array) as record:
                    back = _variant.read(record)
                self.assertEqual((back, back.type, back.lower_bounds), (array, kind, (-1, 7)))
                new = Array(kind, 2)
                self.assertEqual([new[0], new[1]], new.tolist())

    def test_elements_that_do_not_fit_are_refused(self):
        for kind, value, expected in REFUSED:
            with self.subTest(kind.name, value=value):
                array = Array(kind, 1)
                before = array.tolist()
                self.assertRaises(expected, Array.of, [value], kind)
                with self.assertRaises(expected):
                    array[0] = value
                self.assertEqual(array.tolist(), before)

    def test_an_index_is_one_integer_per_dimension(self):
        for index in [slice(0, 1), "1", 1.0]:
            with self.subTest(index=index):
                self.assertRaisesRegex(TypeError, "^an index is one integer per dimension, not ",
                                       lambda: Array(Type.I4, 3)[index])

    def test_indices_are_compared_with_the_bounds(self):
        array = Array(Type.I4, (2, 3), (1, -1))
        for index in [(0, 0), (3, 0), (1, -2), (1, 2), 1, (1, 1, 1), (1, 1 << 32), (1, 10 ** 5000)]:
            with self.subTest(index=index):
                self.assertRaises(IndexError, lambda: array[index])
                with self.assertRaises(IndexError):
                    array[index] = 1
        for index in ((1, 0.5), (1, 1.0), (1, None)):
            self.assertRaises(TypeError, lambda: array[index])
        self.assertEqual([list(array), [*Array.of([5, 6], Type.I4, (3,))], list(Array(Type.R8, (2, 0)))],
                         [[[0, 0, 0], [0, 0, 0]], [5, 6], [[], []]])

    def test_what_cannot_be_an_array_is_refused(self):
        endless = []
        endless.append(endless)
        for number, (make, expected) in enumerate([
                (lambda: Array(Type.I4, (65536, 65536)), Error),   # the library wraps the product around
                (lambda: Array(Type.I4, (1 << 32, 0)), Error), (lambda: Array(Type.I4, -1), Error),
                (lambda: Array(Type.I4, 10 ** 5000), Error),
                (lambda: Array(Type.I4, 2, [(1 << 31) - 1]), Error), (lambda: Array(Type.I4, 1, [-1 << 32]), Error),
                (lambda: Array(Type.I4, (1,), (0, 0)), ValueError), (lambda: Array(Type.I4, ()), ValueError),
                (lambda: Array(Type.OPAQUE, 1), Error), (lambda: Array(Type.EMPTY, 0), Error),
                (lambda: Array.of([[1], [2, 3]], Type.I4), ValueError),
                (lambda: Array.of([[1], 2], Type.I4), ValueError),
                (lambda: Array.of([1, [2]], Type.I4), ValueError), (lambda: Array.of(endless), ValueError),
                (lambda: Array.of("text"), TypeError),
                (lambda: Array.of((ctypes.c_int32.__ctype_be__ * 2)()), TypeError)]):   # in the other byte order
            with self.subTest(number=number):
                self.assertRaises(expected, make)

    def test_conversion_never_truncates(self):
        array = Array.of([[1, 300], [2, 3]], Type.I4, (5, 6))
        self.assertEqual((array.astype(Type.STR).tolist(), array.astype(Type.STR).lower_bounds),
                         ([["1", "300"], ["2", "3"]], (5, 6)))
        self.assertRaises(Error, array.astype, Type.UI1)
        self.assertRaises(Error, array.astype, Type.EMPTY)
        self.assertEqual(zrcore.convert(array, Type.R8).tolist(), [[1.0, 300.0], [2.0, 3.0]])
        self.assertEqual(Array(Type.I4, 0).astype(Type.R8), Array(Type.R8, 0))
        for source, elements, target, expected in WIDE:
            with self.subTest(source=source.name, elements=elements, target=target.name):
                array = Array.of(elements, source)
                if expected is Error:
                    self.assertRaises(Error, array.astype, target)
                else:
                    self.assertEqual(array.astype(target).tolist(), expected)

    def test_equality_needs_the_same_type_and_shape(self):
        array = Array.of([0, 0], Type.I4)
        for duplicate in (array.copy(), copy.copy(array), copy.deepcopy(array)):
            duplicate[0] = 1
            self.assertNotEqual(array, duplicate)
            duplicate[0] = 0
            self.assertEqual(array, duplicate)
        for other in (Array(Type.UI4, 2), Array(Type.I4, 3), Array(Type.I4, 2, [1]), Array(Type.I4, (2, 1)), [0, 0]):
            self.assertNotEqual(array, other)


class ViewTest(unittest.TestCase):
    def test_the_last_view_clears_the_flag_and_keeps_the_memory(self):
        array = Array.of([[1, 2, 3], [4, 5, 6]], Type.I4)
        first, second = array.view(), array.view()
        first[0, 0] = 7
        self.assertEqual((second[0, 0], array.tolist()[0][0], array.copy()[0, 0]), (7, 7, 7))
        del first
        with self.assertRaises(Error) as caught:
            array[0, 0] = 8
        self.assertEqual(caught.exception.name, "ZR_R_INVALID_OBJECT_STATE")
        self.assertRaises(Error, lambda: array[0, 0])
        part = second.cast("B")[20:]
        del second
        self.assertRaises(Error, lambda: array[0, 0])
        del part
        self.assertEqual(array[0, 0], 7)
        view = array.view()
        del array
        gc.collect()
        self.assertEqual(view.tolist(), [[7, 2, 3], [4, 5, 6]])

    def test_views_of_numbers_only(self):
        for kind, _ in ELEMENTS:
            array = Array(kind, (2, 3))
            if kind in (Type.STR, Type.BLOB, Type.UUID, Type.REF, Type.SREF, Type.VARIANT, Type.UNKNOWN):
                self.assertRaises(TypeError, array.view)
            else:
                self.assertEqual((array.view().shape, array.view().readonly), ((2, 3), False))
        self.assertEqual(len(Array(Type.I4, (2, 0)).view()), 0)
        if sys.version_info >= (3, 12):
            self.assertEqual(memoryview(Array.of([5], Type.I4)).tolist(), [5])

    @unittest.skipUnless(numpy, "numpy is not installed")
    def test_numpy_shows_the_memory_of_the_library(self):
        array = Array(Type.R8, (1000, 1000))
        shown = numpy.asarray(array)
        self.assertEqual(shown.ctypes.data, ctypes.addressof(array._open()))
        shown[999, 999] = 0.5
        part = shown[999:]
        del shown
        self.assertRaises(Error, lambda: array[0, 0])
        del array
        gc.collect()
        self.assertEqual(part[0, 999], 0.5)
        self.assertEqual(numpy.asarray(Array(Type.I4, (2, 0))).shape, (2, 0))
        copied = numpy.array(Array.of([1], Type.I4), dtype="f8")
        self.assertEqual((copied.dtype, copied.tolist()), (numpy.float64, [1.0]))

    @unittest.skipUnless(numpy, "numpy is not installed")
    def test_arrays_of_numpy_are_copied_in_their_order(self):
        turned = Array.of(numpy.arange(6, dtype="i4").reshape(2, 3).T)
        self.assertEqual((turned.type, turned.tolist()), (Type.I4, [[0, 3], [1, 4], [2, 5]]))
        for code in "?bhilqBHILQfd":
            source = numpy.array([[0, 1, 1]], dtype=code)
            array = Array.of(source)
            self.assertEqual((array.tolist(), array.view().itemsize), (source.tolist(), source.itemsize), code)
        self.assertEqual(Array.of([numpy.int16(5), numpy.float64(2)], Type.VARIANT).tolist(), [5, 2.0])
        self.assertEqual(Array.of([numpy.uint8(5), 6], Type.I4).tolist(), [5, 6])
        self.assertEqual(Array.of([numpy.bool_(True), False], Type.BOOL).tolist(), [True, False])
        self.assertEqual(Array.of(numpy.arange(3), Type.I2).type, Type.I2)
        self.assertRaises(Error, Array.of, numpy.arange(300), Type.I1)
        self.assertRaises(TypeError, Array.of, numpy.array([0.5]), Type.I2)   # as for [0.5]
        for source in (numpy.array(["x"]), numpy.array([1], dtype=">i4"), numpy.array([1], dtype="f2")):
            self.assertRaises(TypeError, Array.of, source)

    def test_a_shape_for_which_there_is_no_memory_does_not_end_the_process(self):
        code = ("import resource, zrcore\n"
                "resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))\n"
                "try: zrcore.Array(zrcore.Type.VARIANT, (1 << 31) - 1)\n"
                "except zrcore.Error as error: print(error.name)\n")
        try:
            import resource  # noqa: F401
        except ImportError:
            self.skipTest("the system has no limits")
        from test_lifetime import run_script
        self.assertEqual(run_script(code), (0, "ZR_R_NO_MEMORY\n", ""))


if __name__ == "__main__":
    unittest.main()
