#!/usr/bin/python3
"""What the workflows may do: nothing that a moved tag could change, and no write access for code of the
repository. workflows_test.py DIRECTORY"""

import pathlib
import re
import sys
import unittest

import yaml

WORKFLOWS = {path.name: yaml.safe_load(path.read_text())
             for path in pathlib.Path(sys.argv.pop()).glob("*.y*ml")}
WRITES = re.compile(r"write")


def jobs():
    for name, workflow in WORKFLOWS.items():
        for job_name, job in workflow["jobs"].items():
            yield f"{name}: {job_name}", job, job.get("permissions", workflow.get("permissions", "write-all"))


class Workflows(unittest.TestCase):
    def test_name_what_they_run_by_its_content(self):
        self.assertTrue(WORKFLOWS)
        for name, job, _ in jobs():
            container = job.get("container", {})
            image = container if isinstance(container, str) else container.get("image")
            if image is not None:
                self.assertRegex(image, r"@sha256:[0-9a-f]{64}$", name)
            for step in job["steps"]:
                if "uses" in step:
                    self.assertRegex(step["uses"], r"^[\w.-]+/[\w.-]+@[0-9a-f]{40}$", name)

    def test_keep_no_credentials_after_checkout(self):
        for name, job, _ in jobs():
            for step in job["steps"]:
                if step.get("uses", "").startswith("actions/checkout@"):
                    self.assertIs(step.get("with", {}).get("persist-credentials"), False, name)

    def test_run_no_code_of_the_repository_where_they_may_write(self):
        for name, job, permissions in jobs():
            if not WRITES.search(str(permissions)):
                continue
            self.assertNotIn("container", job, name)
            for step in job["steps"]:
                self.assertFalse(step.get("uses", "").startswith("actions/checkout@"), name)
                self.assertNotRegex(step.get("run", ""), r"scripts/|\./", name)


if __name__ == "__main__":
    unittest.main()
