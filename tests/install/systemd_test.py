"""What systemd makes of the installed units, of their user and of the folders that they need."""

import os
import re
import shutil
import stat
import unittest

import installation
import surface

SERVICES = ["searchd", "unenrolld"]


def need(program):
    if not shutil.which(program):
        raise unittest.SkipTest(f"{program} is not installed")


class Units(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.installed = installation.in_place()
        cls.addClassCleanup(cls.installed.close)

    def unit(self, service):
        return self.installed.top / f"lib/systemd/system/{service}.service"

    def test_a_unit_starts_the_program_that_was_installed_with_it(self):
        for service in SERVICES:
            text = self.unit(service).read_text()
            started = re.findall(r"^ExecStart=(.*)$", text, re.MULTILINE)
            self.assertEqual(started, [str(self.installed.top / "sbin" / service)])
            self.assertTrue(os.access(started[0], os.X_OK))
            self.assertEqual(re.findall(r"@\w+@", text), [])

    def test_systemd_has_no_complaint_about_the_units(self):
        need("systemd-analyze")
        for service in SERVICES:
            with self.subTest(service):
                checked = surface.run("systemd-analyze", "verify", "--man=no", "--recursive-errors=no",
                                      self.unit(service))
                self.assertEqual((checked.returncode, checked.stdout), (0, ""))

    def test_a_unit_whose_program_is_missing_is_noticed(self):
        need("systemd-analyze")
        broken = self.unit("searchd").with_name("broken.service")
        broken.write_text(self.unit("searchd").read_text().replace("/sbin/searchd", "/sbin/nowhere"))
        self.addCleanup(broken.unlink)
        self.assertNotEqual(surface.run("systemd-analyze", "verify", "--man=no", broken).returncode, 0)

    def test_the_units_are_sandboxed(self):
        need("systemd-analyze")
        for service in SERVICES:
            said = surface.output("systemd-analyze", "security", "--no-pager", "--offline=true", self.unit(service))
            exposure = re.search(rf"Overall exposure level for {service}\.service: ([\d.]+)", said)
            self.assertLess(float(exposure.group(1)), 3.0, said)


class Preparation(unittest.TestCase):
    """The user and the folders, made in a system that is only a folder."""

    @classmethod
    def setUpClass(cls):
        cls.installed = installation.staged()
        cls.addClassCleanup(cls.installed.close)
        cls.root = cls.installed.root

    def test_a_dry_run_would_make_the_user_that_the_units_name(self):
        need("systemd-sysusers")
        said = surface.output("systemd-sysusers", "--dry-run", f"--root={self.root}")
        self.assertIn("twobject", said)
        for service in SERVICES:
            text = (self.installed.top / f"lib/systemd/system/{service}.service").read_text()
            self.assertEqual(re.findall(r"^(?:User|Group)=(.*)$", text, re.MULTILINE), ["twobject", "twobject"])

    def test_the_folders_are_the_users_own_and_closed_to_others(self):
        need("systemd-sysusers")
        need("systemd-tmpfiles")
        if os.geteuid() != 0:
            self.skipTest("only root makes folders of another user's")
        (self.root / "etc").mkdir(exist_ok=True)
        surface.output("systemd-sysusers", f"--root={self.root}")
        user = re.search(r"^twobject:[^:]*:(\d+):(\d+):[^:]*:/var/lib/twobject:(.*)$",
                         (self.root / "etc/passwd").read_text(), re.MULTILINE)
        self.assertIsNotNone(user)
        self.assertTrue(user.group(3).endswith("nologin"), user.group(3))
        surface.output("systemd-tmpfiles", "--create", f"--root={self.root}",
                       self.installed.top / "lib/tmpfiles.d/twobject.conf")
        for folder in ("var/lib/twobject", "run/twinfod"):
            state = (self.root / folder).stat()
            self.assertEqual((stat.S_IMODE(state.st_mode), state.st_uid, state.st_gid),
                             (0o700, int(user.group(1)), int(user.group(2))), folder)


if __name__ == "__main__":
    # A test that is left out says why.
    unittest.main(verbosity=2)
