"""What the workflow on GitHub does is calls of our scripts, each of which anybody can run by hand."""

import os
import unittest
from pathlib import Path

import yaml

ROOT = Path(__file__).resolve().parents[2]
WORKFLOW = yaml.safe_load((ROOT / ".github/workflows/ci.yml").read_text(encoding="utf-8"))
JOBS = WORKFLOW["jobs"]


def scripts_of(job):
    return [step["run"] for step in JOBS[job]["steps"] if "run" in step]


def kept(job):
    return [step["with"] for step in JOBS[job]["steps"] if step.get("uses", "").startswith("actions/upload-artifact@")]


class Workflow(unittest.TestCase):
    def test_runs_for_every_push_and_request(self):
        # YAML 1.1 reads the key "on" as a truth.
        self.assertLessEqual({"push", "pull_request"}, set(WORKFLOW[True]))

    def test_every_step_is_a_script_of_ours_or_github_s_own(self):
        for name, job in JOBS.items():
            for step in job["steps"]:
                with self.subTest(job=name, step=step):
                    self.assertEqual(("run" in step) + ("uses" in step), 1)
                    if "run" in step:
                        script, *_ = step["run"].split()
                        self.assertRegex(step["run"], r"\Ascripts/[\w -]+\Z")
                        self.assertTrue(os.access(ROOT / script, os.X_OK))
                    else:
                        self.assertRegex(step["uses"], r"\Aactions/(checkout|upload-artifact)@v\d+\Z")

    def test_every_job_has_the_sources_first(self):
        for name, job in JOBS.items():
            with self.subTest(job=name):
                self.assertRegex(job["steps"][0].get("uses", ""), r"\Aactions/checkout@")

    def test_debian_runs_in_a_container_all_that_the_tests_are(self):
        self.assertIn("bookworm", JOBS["debian"]["container"])
        self.assertEqual(scripts_of("debian"), ["scripts/test"])

    def test_macos_is_set_up_tested_and_packed(self):
        self.assertRegex(JOBS["macos"]["runs-on"], r"\Amacos-(latest|1[4-9]|[2-9]\d)\Z")  # on Apple's own processors
        self.assertEqual(scripts_of("macos"), ["scripts/setup", "scripts/test", "scripts/package"])

    def test_the_image_and_the_pictures_of_the_tour_are_kept_or_the_job_fails(self):
        image, pictures = kept("macos")
        self.assertEqual(image["path"], "build/*/*.dmg")
        self.assertEqual(pictures["path"], "build/release/tour-output")
        tour = (ROOT / "tools/tour/CMakeLists.txt").read_text(encoding="utf-8")
        self.assertIn('--tour-as-built "${CMAKE_BINARY_DIR}/tour-output"', tour)
        for artifact in (image, pictures):
            self.assertEqual(artifact["if-no-files-found"], "error")
        self.assertIn("always()", JOBS["macos"]["steps"][-1]["if"])


if __name__ == "__main__":
    unittest.main()
