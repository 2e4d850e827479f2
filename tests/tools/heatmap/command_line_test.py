"""What heatmap says of a command line that asks for what cannot be: the argument, the value, the remedy."""

import unittest

from case import SINK, Case


class CommandLine(Case):
    # What is said, a regular expression, and the arguments after the part and --out.
    USAGE = [
        ('--hot "ball:1,2,x,1" has "x" where a number should be: write it like', ["--hot", "ball:1,2,x,1"]),
        ('--hot "ball:1,,2,1" has "" where a number should be', ["--hot", "ball:1,,2,1"]),
        ('--hot "ball:1,2,3,1," has "" where a number', ["--hot", "ball:1,2,3,1,"]),
        ('--cold "ball:1,2" has 2 numbers and needs 4: ball:X,Y,Z,R', ["--cold", "ball:1,2"]),
        ("has 5 numbers and needs 4: ball:X,Y,Z,R", ["--hot", "ball:1,2,3,4,5"]),
        ("has 1 number and needs 4", ["--hot", "ball:1"]),
        ("has 0 numbers and needs 6: box:X1,Y1,Z1,X2,Y2,Z2", ["--hot", "box"]),
        ("has 6 numbers and needs 7: cyl:X1,Y1,Z1,X2,Y2,Z2,R", ["--hot", "cyl:1,2,3,4,5,6"]),
        ("has 4 numbers and needs 6: plane:X,Y,Z,NX,NY,NZ", ["--hot", "plane:1,2,3,4"]),
        ("has 2 numbers and needs 3: face:X,Y,Z", ["--hot", "face:1,2"]),
        ("has 1 number and needs 3: edge:X,Y,Z", ["--hot", "edge:1"]),
        ('has "" where a number', ["--hot", "z+:"]),
        ("has 2 numbers and needs 1: z[+]:0.1 for", ["--hot", "z+:0.1,2"]),
        ("has the radius -1: give one above 0", ["--hot", "ball:1,2,3,-1"]),
        ("has the radius 0: give one above 0", ["--hot", "cyl:1,2,3,4,5,6,0"]),
        ("has an axis of no length: give two different ends", ["--hot", "cyl:1,2,3,1,2,3,1"]),
        ("has a normal of no length: give a direction", ["--hot", "plane:1,2,3,0,0,0"]),
        ("has a number beyond 1e100, too large", ["--hot", "ball:1e300,0,0,1"]),
        ("has 1.5 for a face: give the number that --list-faces prints", ["--hot", "face:1.5"]),
        ("has 0 for a face", ["--hot", "face:0"]),
        ("has the fraction 10: give one between 0 and 1", ["--hot", "z+:10"]),
        ("has the fraction -0.1: give one between", ["--hot", "z+:-0.1"]),
        ('--cold "q[+]" is none of x- x[+] .* face:, edge:, ball:, box:, cyl: and plane:', ["--cold", "q+"]),
        ('--hot "x" is none of', ["--hot", "x"]),
        ('--hot "" is none of', ["--hot", ""]),
        ('"nearest:1,2,3" would select a single vertex, which has no capacity.*Take ball:', ["--hot", "nearest:1,2,3"]),
        ('--hot "x[+]=warm" has "warm" where a number', ["--hot", "x+=warm"]),
        ('--hot "x[+]=" has "" where a number', ["--hot", "x+="]),
        ('--hot "x[+]=inf" has "inf" where a number', ["--hot", "x+=inf"]),
        ('--hot-value: "nan" is not finite', ["--hot-value", "nan"]),
        ('--cold-value: "1e999" is not finite', ["--cold-value", "1e999"]),
        ('--tolerance: "-1" is negative: give 0 or more', ["--tolerance", "-1"]),
        ('--hot-value: "80C" is not a number: write it like .* without a unit', ["--hot-value", "80C"]),
        ('--tolerance: "1,5" is not a number', ["--tolerance", "1,5"]),
        ('" 5" is not a number', ["--tolerance", " 5"]),
        ('"[+]-5" is not a number', ["--hot-value", "+-5"]),
        # Long nonsense is not said back whole.
        ('"1{60}[.]{3}" is not finite', ["--hot-value", "1" * 400]),
        ('"ü{30}[.]{3}" is none of', ["--hot", "ü" * 40]),
        ("value, 20 and 20, are the same.* give --hot-value and --cold-value, or =VALUE",
         ["--hot-value", "20", "--cold-value", "20"]),
        ("value, 7 and 7, are the same", ["--hot", "x-=7", "--cold", "x+=7"]),
        ("value, 0 and 0, are the same", ["--hot", "x-=0"]),
        ("-1e[+]308 and 1e[+]308, are too far apart", ["--hot-value", "1e308", "--cold-value", "-1e308"]),
        # Fields whose colours would be rounding errors, infinite or NaN.
        ("too near to each other", ["--hot-value", "293.1500000000001", "--cold-value", "293.15"]),
        ("too small to compute with", ["--hot-value", "1e-320"]),
        ("is too wide to compute with", ["--range", "-1e308", "1e308"]),
        ("--range 0 0.5 leaves out prescribed values: begin at or below 0 and end at or above 1",
         ["--range", "0", "0.5"]),
        ("begin at or below 0 and end at or above 90", ["--hot", "x-=90", "--hot", "x+", "--cold", "y+",
                                                        "--range", "0", "50"]),
        ('--edge "0" is neither a length above 0 nor none', ["--edge", "0"]),
        ('--edge "coarse" is neither', ["--edge", "coarse"]),
        ('--within "0" is not a tolerance above 0: write 0.4, .* or 0.5%', ["--within", "0"]),
        ('--within "-1%" is not a tolerance', ["--within", "-1%"]),
        ('--within "0.5%%" is not a tolerance', ["--within", "0.5%%"]),
        ('--within "%" is not a tolerance', ["--within", "%"]),
        ('--within "fine" is not a tolerance', ["--within", "fine"]),
        ("--within and --edge exclude each other", ["--within", "1%", "--edge", "2"]),
        ("not expected: .*--hott", ["--hott", "z+"]),
    ]

    def test_refuses_before_any_work(self):
        for words, arguments in self.USAGE:
            with self.subTest(arguments):
                self.refuses_at_once(2, words, SINK, "--out", "o", *arguments)

    def test_numbers_may_have_a_sign_or_an_exponent(self):
        result = self.solve(SINK, "--hot-value", "+2e1", "--cold-value", "-.5", "--edge", "none")
        self.assertEqual((result.json["minimum"], result.json["maximum"]), (-0.5, 20))

    def test_refuses_missing_and_empty_names(self):
        self.refuses_at_once(2, "--out is missing: give a directory", SINK)
        self.refuses_at_once(2, "PART is empty: give the path", "", "--out", "o")
        self.refuses_at_once(2, "--out is missing", SINK, "--out", "")

    def test_says_version_and_help(self):
        self.assertRegex(self.stdout_of("--version"), r"^heatmap of quor \d+\.\d+\.\d+\n$")
        words = self.stdout_of("--help")
        for word in ("Exit status", "--within", "face:X,Y,Z", "cyl:X1", "not of the\nsolid"):
            self.assertIn(word, words)


if __name__ == "__main__":
    unittest.main()
