"""Files that are missing or broken: the agent says which and why, and ends."""

import json
import os
import unittest

from talvik_e2e import BIN, SOURCE, TalvikTest

MIB = "KEL-TALVIK-MIB.json"


class BadInput(TalvikTest):
    def description(self):
        return json.loads((SOURCE / "mibs" / MIB).read_text())

    def refuse_description(self, description, *reasons):
        text = description if isinstance(description, str) else json.dumps(description)
        path = self.write(f"mibs/{MIB}", text)
        self.assert_refuses_to_start(path, *reasons, mib_dir=path.parent)

    def test_device_configuration(self):
        self.assert_refuses_to_start("/does/not/exist.xml", device="/does/not/exist.xml")
        broken = self.write("device.xml", "<device>\n<section name='A'>\n")
        self.assert_refuses_to_start(broken, "line", device=broken)
        empty = self.write("empty.xml", "")
        self.assert_refuses_to_start(empty, device=empty)
        poor = self.write("poor.xml", "<device><section name='BASIC_INFO'/></device>")
        self.assert_refuses_to_start(poor, "BASIC_INFO", device=poor)

    def test_agent_configuration(self):
        self.assert_refuses_to_start(self.folder / "none.conf", "no such file", config=self.folder / "none.conf")
        self.assert_refuses_to_start(self.folder, "no regular file", config=self.folder)
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        self.assert_refuses_to_start(pipe, "no regular file", config=pipe)
        broken = self.write("broken.conf", "rocommunity reader\n\nview incomplete\n")
        self.assert_refuses_to_start(broken, "line 3", config=broken)
        weak = self.write("weak.conf", 'createUser operator SHA-256 "short" AES "short"\n')
        self.assert_refuses_to_start(weak, "line 1", config=weak)
        own = self.write("own.conf", "rocommunity reader\nexactEngineID 0x80001f8880aabbccdd\n")
        self.assert_refuses_to_start(own, "exactEngineID", config=own)

    def test_words_of_the_agent_configuration_that_are_not_supported(self):
        elsewhere = self.folder / "elsewhere"
        moved = self.write("moved.conf", f"rocommunity reader\n[snmp] persistentDir {elsewhere}\n")
        self.assert_refuses_to_start(moved, "persistentDir", config=moved)
        master = self.write("master.conf", "rocommunity reader\nmaster agentx\n")
        self.assert_refuses_to_start(master, "master agentx", config=master)

    def test_unknown_words_are_logged_and_fail_a_check(self):
        config = self.write("words.conf", "rocommunity reader\nnonsense 1\n")
        agent = self.start_agent(config=config)
        self.assertIn(f"{config}: line 2", agent.log())
        result = self.run_agent("--check", config=config)
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{config}: line 2", result.stderr)

    def test_mib_description_that_is_no_json(self):
        self.assert_refuses_to_start(self.folder / MIB, "No such file", mib_dir=self.folder)
        self.refuse_description("", "value, object or array expected")
        self.refuse_description('{"module": "X",\n "root": }', "Line 2, Column 10")
        self.refuse_description('{"module": "X", "module": "Y"}', "module")
        self.refuse_description("[" * 5000, "tack")
        self.refuse_description("[]", "expected an object")

    def test_mib_description_that_contradicts_itself(self):
        def broken(change, *reasons):
            description = self.description()
            change(description, description["tables"][0], description["tables"][0]["columns"])
            with self.subTest(reasons=reasons):
                self.refuse_description(description, *reasons)

        broken(lambda d, t, c: d.pop("root"), 'lacks the member "root"')
        broken(lambda d, t, c: d.update(extra=1), 'unknown member "extra"')
        broken(lambda d, t, c: t.update(oid="1.3.six"), "tables[0].oid", "1.3.six")
        broken(lambda d, t, c: t.update(oid="1.3.6.1.4.1.4.1"), "does not lie under the root")
        broken(lambda d, t, c: t.update(index=[]), "tables[0].index", "at least one")
        broken(lambda d, t, c: t.update(index=["nobody"]), "tables[0].index[0]", "nobody")
        broken(lambda d, t, c: t.update(columns=[]), "tables[0].columns", "at least one")
        broken(lambda d, t, c: c[1].update(syntax="Gauge33"), "tables[0].columns[1].syntax", "Gauge33")
        broken(lambda d, t, c: c[1].update(access="write-only"), "tables[0].columns[1].access", "write-only")
        broken(lambda d, t, c: c[1].update(tag=1), "tables[0].columns", "tag 1 stands here twice")
        broken(lambda d, t, c: c[1].update(tag=0), "tables[0].columns[1].tag", "1 to 4095")
        broken(lambda d, t, c: c[1].update(name=c[0]["name"]), "stands here twice")
        broken(lambda d, t, c: c[0].update(enumeration={"a": 1}), "tables[0].columns[0].enumeration")
        broken(lambda d, t, c: d["tables"].append(dict(t)), "lies within")
        broken(lambda d, t, c: d["tables"].append(dict(t, oid=t["oid"] + ".1")), "lies within")
        broken(lambda d, t, c: d.update(tables=[]), "describes no table or scalar there", "1.3.6.1.4.1.99999.2.91.9.1")

    def test_check_says_ok_and_changes_nothing(self):
        result = self.run_agent("--check")
        self.assertEqual((result.returncode, result.stdout), (0, "OK\n"), result.stderr)
        self.assertFalse(self.state.exists())

    def test_sample_configuration_passes_the_check(self):
        result = self.run_agent("--check", config=SOURCE / "etc" / "talvik-agentd.conf")
        self.assertEqual((result.returncode, result.stdout), (0, "OK\n"), result.stderr)

    def test_wrong_usage(self):
        for extra in (["--nonsense"], ["stray"], ["--config"]):
            with self.subTest(extra=extra):
                self.assertEqual(self.run_agent(*extra).returncode, 2)

        def refused(*expected, **changes):
            result = self.run_agent(**changes)
            self.assertEqual(result.returncode, 2, result.stderr)
            for text in expected:
                self.assertIn(text, result.stderr)

        refused("loud", "trace,debug,info,warn,error", log_level="loud")
        refused("pigeon", "embedded or unix:PATH", backend="pigeon")
        self.assertEqual(self.run_agent("--listen", "").returncode, 2)

    def test_state_directory_that_cannot_be_used(self):
        occupied = self.write("occupied", "a file")
        self.assert_refuses_to_start(occupied, state_dir=occupied)
        self.start_agent()
        self.assert_refuses_to_start(self.state, "in use by another agent")

    def test_program_holds_no_path_of_the_building_machine(self):
        self.assertNotIn(str(SOURCE).encode(), (BIN / "talvik-agentd").read_bytes())


if __name__ == "__main__":
    unittest.main()
