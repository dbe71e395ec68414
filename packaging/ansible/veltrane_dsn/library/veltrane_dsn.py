#!/usr/bin/python
"""Brings DSNs of the Veltrane ODBC driver to a described state.

One call of veltrane-dsn apply does all of them. The description goes to its standard input, with
the passwords: they are in no argument, no environment and no file.
"""
import json

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.common.parameters import remove_values

DOCUMENTATION = r"""
module: veltrane_dsn
short_description: Bring DSNs of the Veltrane ODBC driver to a described state
description:
  - Adds, changes and removes DSNs with C(veltrane-dsn apply). A second run changes nothing.
  - Each DSN is changed completely or not at all. A DSN that fails does not stop the others; the
    task fails after all have been tried, and says which failed and why.
  - Supports check mode, in which nothing is written, and C(--diff), in which passwords are masked.
options:
  data_sources:
    description: The DSNs. Others on the host are not touched.
    type: list
    elements: dict
    required: true
    suboptions:
      name:
        description: The DSN.
        type: str
        required: true
      state:
        description: Whether the DSN should exist.
        type: str
        choices: [present, absent]
        default: present
      driver:
        description: The driver's name in odbcinst.ini.
        type: str
      values:
        description: Keys of odbc.ini with their values. A key with null is removed.
        type: dict
        default: {}
      pwd:
        description: The password.
        type: str
      pwd_file:
        description: A file of the host whose first line is the password.
        type: path
  scope:
    description: DSNs of all users, or of the user who runs the task.
    type: str
    choices: [system, user]
    default: system
  driver:
    description: The driver's name, unless a DSN names another one.
    type: str
    default: Veltrane
  replace:
    description: Remove keys of a DSN that its description does not name.
    type: bool
    default: false
  prune:
    description: Remove the driver's DSNs that are not described. At least one has to be described.
    type: bool
    default: false
  driver_library:
    description: The library with which programs connect. It is registered for the driver, which
      has to be registered with its setup library already, as the package does it.
    type: path
  test:
    description: Connect to each DSN that should exist, with C(veltrane-dsn test). Not in check
      mode. A DSN that does not connect fails the task after all have been tried.
    type: bool
    default: false
  test_timeout:
    description: Seconds after which a driver that does not answer is stopped.
    type: int
    default: 15
  executable:
    description: The tool, by name or path.
    type: str
    default: veltrane-dsn
"""

EXAMPLES = r"""
- name: The DSNs of the reporting hosts
  veltrane_dsn:
    data_sources:
      - name: sales
        values: {Server: bi.example.org, Database: sales, UID: reports}
        pwd: "{{ vault_sales_pwd }}"
      - name: old
        state: absent
"""

RETURN = r"""
results:
  description: The result of each DSN.
  type: list
  elements: dict
  returned: when the tool could be run
  sample: [{name: sales, state: changed, action: added, difference: ["+[sales]"]}]
driver:
  description: The result of the driver's registration.
  type: dict
  returned: with driver_library
  sample: {driver: Veltrane, changed: true, difference: ["+Driver=/opt/v/libdriver.so"]}
tests:
  description: The output of veltrane-dsn test for each DSN.
  type: list
  elements: dict
  returned: with test
  sample: [{name: sales, connected: true, server: Veltrane, version: "1.0", time_ms: 12}]
"""

ARGUMENTS = {
    "data_sources": {
        "type": "list", "elements": "dict", "required": True,
        "options": {
            "name": {"type": "str", "required": True},
            "state": {"type": "str", "choices": ["present", "absent"], "default": "present"},
            "driver": {"type": "str"},
            "values": {"type": "dict", "default": {}},
            "pwd": {"type": "str", "no_log": True},
            "pwd_file": {"type": "path", "no_log": False},
        },
        "mutually_exclusive": [("pwd", "pwd_file")],
    },
    "scope": {"type": "str", "choices": ["system", "user"], "default": "system"},
    "driver": {"type": "str", "default": "Veltrane"},
    "replace": {"type": "bool", "default": False},
    "prune": {"type": "bool", "default": False},
    "driver_library": {"type": "path"},
    "test": {"type": "bool", "default": False},
    "test_timeout": {"type": "int", "default": 15},
    "executable": {"type": "str", "default": "veltrane-dsn"},
}


def is_secret_key(key):
    """The rule of veltrane-dsn, which masks the same keys in the differences that it prints."""
    parts = ("pwd", "password", "passwd", "secret", "token", "apikey")
    return any(part in str(key).lower() for part in parts)


class Module(AnsibleModule):
    """Keeps passwords among the values out of the system log and out of all output.

    Ansible logs the arguments before anything else runs, in Python's spelling. It does not
    recognise a password with a quote or a backslash there, not even that of pwd.
    """

    def _log_invocation(self):
        self.mask_secret_values()
        arguments = self.params
        self.params = remove_values(arguments, self.no_log_values)
        super()._log_invocation()
        self.params = arguments

    def mask_secret_values(self):
        for source in self.params["data_sources"]:
            for key, value in (source["values"] or {}).items():
                if is_secret_key(key) and value not in (None, ""):
                    self.no_log_values.add(str(value))


def describe(module):
    """Returns the description for apply."""
    descriptions = []
    for source in module.params["data_sources"]:
        description = {"name": source["name"], "state": source["state"]}
        values = dict(source["values"] or {})
        if source["pwd"] is not None:
            values["PWD"] = source["pwd"]
        if source["state"] == "present":
            description["values"] = values
            if source["pwd_file"]:
                description["pwd_file"] = source["pwd_file"]
        if source["driver"]:
            description["driver"] = source["driver"]
        descriptions.append(description)
    return json.dumps({"data_sources": descriptions}, ensure_ascii=False)


def foresee_without_tool(module):
    """Ends check mode before the packages are installed: the DSNs of the host are unknown."""
    present = [source["name"] for source in module.params["data_sources"]
               if source["state"] == "present"]
    module.warn("%s is not installed yet, so the DSNs of the host are unknown; "
                "those that should exist count as changed." % module.params["executable"])
    module.exit_json(changed=bool(present), results=[])


def run_tool(module, tool, *arguments, **options):
    code, output, errors = module.run_command([tool, *arguments, "--json"], errors="replace",
                                              **options)
    try:
        return json.loads(output)
    except ValueError:
        reason = errors.strip() or "it printed nothing that could be understood"
        return module.fail_json(msg="veltrane-dsn ended with code %d: %s" % (code, reason))


def register_library(module, tool):
    arguments = ["driver", "register", "--replace", "--driver", module.params["driver"],
                 "--library", module.params["driver_library"]]
    return run_tool(module, tool, *arguments, *(["--dry-run"] if module.check_mode else []))


def apply(module, tool):
    arguments = ["apply", "-", "--format", "json", "--" + module.params["scope"],
                 "--driver", module.params["driver"]]
    arguments += ["--" + name for name in ("replace", "prune") if module.params[name]]
    arguments += ["--dry-run"] if module.check_mode else []
    return run_tool(module, tool, *arguments, data=describe(module))


def test(module, tool, results):
    """Connects to the DSNs that should exist and have not failed already."""
    failed = [result["name"] for result in results if result["state"] == "failed"]
    names = [source["name"] for source in module.params["data_sources"]
             if source["state"] == "present" and source["name"] not in failed]
    timeout = ["--timeout", str(module.params["test_timeout"])]
    return [run_tool(module, tool, "test", name, *timeout) for name in names]


def describe_failure(tested):
    """Returns the outcome, each error, and why the driver cannot be loaded, in one line."""
    said = ["%s %s" % (it["state"], it["text"]) for it in tested["diagnostics"]]
    said += [it["text"] for it in tested["findings"]]
    return "%s: %s" % (tested["name"], " ".join([tested["text"], *said]).replace("\n", " "))


def show_difference(results):
    """Returns the lines for --diff; the tool has masked the passwords in them."""
    lines = []
    for result in results:
        if result.get("difference"):
            lines += ["@@ %s @@" % result["name"]] + result["difference"]
    return {"prepared": "\n".join(lines) + "\n"} if lines else {}


def find_tool(module):
    tool = module.get_bin_path(module.params["executable"])
    if tool is None:
        if module.check_mode:
            foresee_without_tool(module)
        module.fail_json(msg="%s is not installed on this host." % module.params["executable"])
    return tool


def do_all(module, tool):
    """Returns the answer, and sentences about failures."""
    answer, problems, differences = {"changed": False, "results": []}, [], []
    if module.params["driver_library"]:
        driver = answer["driver"] = register_library(module, tool)
        for warning in driver.pop("warnings", []):
            module.warn(warning)
        answer["changed"] = driver["changed"]
        differences.append({"name": driver["driver"], "difference": driver["difference"]})
    if module.params["data_sources"]:
        report = apply(module, tool)
        for warning in report.get("warnings", []):
            module.warn(warning)
        answer["changed"] = answer["changed"] or report["changed"]
        answer["results"] = results = report["results"]
        failed = ["%s: %s" % (result["name"], result["message"]) for result in results
                  if result["state"] == "failed"]
        if failed:
            problems.append("%d of %d data sources failed. %s"
                            % (len(failed), len(results), "; ".join(failed)))
    answer["diff"] = show_difference(differences + answer["results"])
    if module.params["test"] and not module.check_mode:
        answer["tests"] = tests = test(module, tool, answer["results"])
        failed = [describe_failure(tested) for tested in tests if not tested["connected"]]
        if failed:
            problems.append("%d of %d data sources do not connect. %s"
                            % (len(failed), len(tests), "; ".join(failed)))
    return answer, problems


def main():
    module = Module(argument_spec=ARGUMENTS, supports_check_mode=True)
    module.mask_secret_values()
    if module.params["prune"] and not module.params["data_sources"]:
        module.fail_json(msg="prune without data sources would remove all of the driver. Where that is "
                             "meant, name one with state: absent.")
    if not module.params["data_sources"] and not module.params["driver_library"]:
        module.exit_json(changed=False, results=[])
    answer, problems = do_all(module, find_tool(module))
    if problems:
        module.fail_json(msg=" ".join(problems), **answer)
    module.exit_json(**answer)


if __name__ == "__main__":
    main()
