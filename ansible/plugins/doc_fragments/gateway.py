# MIT licence, the device_mgmt authors.
"""What the modules have in common."""


class ModuleDocFragment:
    DOCUMENTATION = r"""
options:
  src:
    description:
      - The site, a file of vorcfg calls on the controller, see vorcfg-site(7).
        A relative path is looked up as M(ansible.builtin.copy) does.
      - It is sent as it is. Its variables, C(${NAME}), are those of I(vars) and I(secrets);
        Jinja in it is not evaluated.
      - Files that it names for secrets, C(@FILE), are on the gateway; name them by absolute paths.
    type: str
  vars:
    description: Variables of the site, texts or whole numbers.
    type: dict
    default: {}
  secrets:
    description:
      - Variables of the site that are secrets, from ansible-vault for instance. Only a secret argument takes them.
      - No result, difference, error or journal has them, and no command line either.
    type: dict
    default: {}
  allow_unused:
    description: Allow variables that the site does not use.
    type: bool
    default: false
  gateway:
    description:
      - The name of the gateway, and of its journal, where the site does not begin with it (C(gateway tower-${site})).
      - One of I(src) and I(gateway) is required.
    type: str
  journal_dir:
    description:
      - The folder of the journal, on the gateway. It is made if it is missing, for its owner only.
      - C(vorcfg-revert@.service), which reverts after a restart what nobody confirmed,
        watches C(/var/lib/vorcfg) by default.
    type: str
    default: /var/lib/vorcfg
  vorcfg_path:
    description: vorcfg on the gateway.
    type: str
    default: vorcfg
notes:
  - The gateway needs vorcfg and a POSIX shell, no Python; set C(gather_facts) to false in the play.
    Nothing is copied to it, and no temporary file is made.
  - With a password for C(become), a local connection needs C(ansible_pipelining) to be true.
attributes:
  async:
    description: Is C(async) supported.
    support: none
"""
