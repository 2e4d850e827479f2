"""What heatmap says of a command line that asks for what cannot be."""

import unittest

from case import SINK, Case


class CommandLine(Case):
    # The words, a regular expression, and the arguments after the part and --out.
    USAGE = [
        ("where a number should be", ["--hot", "ball:1,2,x,1"]),
        ("where a number should be", ["--hot", "ball:1,,2,1"]),
        ("needs 4 numbers", ["--hot", "ball:1,2"]),
        ("needs 4 numbers", ["--hot", "ball:1,2,3,4,5"]),
        ("needs one number", ["--hot", "z+:"]),
        ("radius", ["--hot", "ball:1,2,3,-1"]),
        ("fraction between 0 and 1", ["--hot", "z+:10"]),
        ("is none of", ["--cold", "q+"]),
        ('"nan" is not a finite number', ["--hot-value", "nan"]),
        ('"1e999" is not a finite number', ["--cold-value", "1e999"]),
        ('"-1" is negative', ["--tolerance", "-1"]),
        ('"80C" is not a number', ["--hot-value", "80C"]),
        ('"1,5" is not a number', ["--tolerance", "1,5"]),
        ('" 5" is not a number', ["--tolerance", " 5"]),
        ('"\\+-5" is not a number', ["--hot-value", "+-5"]),
        # Long nonsense is not said back whole.
        ('"1{60}[.]{3}" is not a finite number', ["--hot-value", "1" * 400]),
        ('"ü{30}[.]{3}" is none of', ["--hot", "ü" * 40]),
        ("are the same", ["--hot-value", "20", "--cold-value", "20"]),
        ("too far apart", ["--hot-value", "1e308", "--cold-value", "-1e308"]),
        # Fields whose colours would be rounding errors, infinite or NaN.
        ("too near to each other", ["--hot-value", "293.1500000000001", "--cold-value", "293.15"]),
        ("too small to compute with", ["--hot-value", "1e-320"]),
        ("is too wide", ["--range", "-1e308", "1e308"]),
        ("prescribed values, 0 and 1", ["--range", "0", "0.5"]),
        ("neither a length", ["--edge", "0"]),
        ("neither a length", ["--edge", "coarse"]),
        ("not expected: .*--hott", ["--hott", "z+"]),
    ]

    def test_refuses_before_any_work(self):
        for words, arguments in self.USAGE:
            with self.subTest(arguments):
                self.refuses_at_once(2, words, SINK, "--out", "o", *arguments)

    def test_numbers_may_have_a_sign_or_an_exponent(self):
        result = self.solve(SINK, "--hot-value", "+2e1", "--cold-value", "-.5")
        self.assertEqual((result.json["minimum"], result.json["maximum"]), (-0.5, 20))

    def test_refuses_missing_and_empty_names(self):
        self.refuses_at_once(2, "out is required", SINK)
        self.refuses_at_once(2, "PART is empty", "", "--out", "o")
        self.refuses_at_once(2, "out is empty", SINK, "--out", "")

    def test_says_version_and_help(self):
        self.assertRegex(self.stdout_of("--version"), r"^heatmap of quor \d+\.\d+\.\d+\n$")
        self.assertIn("Exit status", self.stdout_of("--help"))


if __name__ == "__main__":
    unittest.main()
