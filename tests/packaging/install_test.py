"""Installs the components to a folder; hosts are built against it and measure, and a machine's client library wins."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

SOURCE, BUILD, MACHINE = (pathlib.Path(os.environ[name]) for name in ("SOURCE", "BUILD", "MACHINE"))
CMAKE = os.environ["CMAKE"]


def run(line, folder, **environment):
    return subprocess.run(
        line, shell=True, cwd=folder, env={**os.environ, **environment}, text=True,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
    )


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.root = pathlib.Path(cls.folder.name)
        built = cls.root / "built"
        for component in ("library", "development", "desktop", "simulator", "tools"):
            run(f"{CMAKE} --install {BUILD} --prefix {built} --component {component}", cls.root)
        cls.prefix = built.rename(cls.root / "moved")  # nothing holds the place where it was installed first
        cls.lib = next(cls.prefix.glob("**/liborsanta.so.1")).parent

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def project(self, name):
        folder = self.root / name
        folder.mkdir()
        program = re.search(r"\n```c\n(.*?)```", (SOURCE / "README.md").read_text(encoding="utf-8"), re.S).group(1)
        (folder / "host.c").write_text(program, encoding="utf-8")
        return folder

    def test_hosts_are_built_by_the_cmake_package_and_by_pkg_config_and_measure(self):
        by_cmake, by_pkg_config = self.project("cmake"), self.project("pkg-config")
        shutil.copy(SOURCE / "tests/packaging/consumer.cmake", by_cmake / "CMakeLists.txt")
        lines = {
            by_cmake: f"{CMAKE} -S . -B . -G Ninja -DCMAKE_PREFIX_PATH={self.prefix} && {CMAKE} --build .",
            by_pkg_config: f"cc host.c -o host $(pkg-config --cflags --libs orsanta) -Wl,-rpath,{self.lib}",
        }
        for folder, line in lines.items():
            built = run(line, folder, PKG_CONFIG_PATH=str(self.lib / "pkgconfig"))
            self.assertEqual(built.returncode, 0, built.stdout)
        pipes = {"text": True, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
        no_display = {**os.environ, "DISPLAY": ":4321"}  # so that the desktop front is loaded and gives up
        hosts = [subprocess.Popen("./host", cwd=folder, env=no_display, **pipes) for folder in lines]
        for host in hosts:
            printed, told = host.communicate()
            self.assertRegex(printed, r"^(4\.999|5\.000|5\.001) mm at 100 g\n$")
            if list(self.prefix.glob("**/liborsanta_desktop.so")):
                self.assertIn("orsanta: no windows", told)

    def test_the_simulator_gives_way_to_a_machines_client_library_beside_the_library(self):
        orsanta = self.prefix / "bin/orsanta"
        stores = self.root / "stores"
        stores.mkdir()
        (stores / "音圈电机1参数").write_text("orsanta store 1\nC_VoiceMotor Val_Block_Size 0 = double 5\nend\n")

        def loaded(kind):
            version = run(f"{orsanta} --version", self.root)
            self.assertRegex(version.stdout, f"libtremalink.so .*, {kind}, .*/libtremalink.so")
            return run(f"{orsanta} doctor --folder {stores}", self.root)

        doctor = loaded("the simulator")
        self.assertEqual(doctor.returncode, 0, doctor.stdout)
        for line in ("client library .*simulator", "bus .* 1, 2, .*15", "folder .*stores", "store .*音圈电机1参数, 1 val"):
            self.assertRegex(doctor.stdout, f"good  {line}")

        shutil.copy(MACHINE, self.lib)
        self.addCleanup(os.remove, self.lib / "libtremalink.so")
        with open(stores / "音圈电机1参数", "a", encoding="utf-8") as store:
            store.write("nonsense\n")
        doctor = loaded("a machine's")
        self.assertEqual(doctor.returncode, 1, doctor.stdout)
        self.assertRegex(doctor.stdout, "BAD   store .*音圈电机1参数")


if __name__ == "__main__":
    unittest.main()
