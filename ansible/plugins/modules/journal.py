#!/usr/bin/python
# MIT licence, the device_mgmt authors.
# What it does is in plugins/action/journal.py: nothing of it runs on the gateway.
DOCUMENTATION = r"""
module: journal
short_description: Fetch the journal of a gateway, or put it back
description:
  - Nothing but its journal knows what a gateway has accepted. This keeps a copy on the controller,
    and gives it to a gateway that lost its own.
  - A journal has values of settings, but no secrets.
version_added: 1.0.0
author: the device_mgmt authors
extends_documentation_fragment: device_mgmt.gateway.gateway
options:
  path:
    description:
      - The copy on the controller, a file with an absolute path. Each gateway needs one of its own.
      - It is replaced as a whole, readable by its owner only. A folder that is missing is made, for its owner only.
    type: path
    required: true
  state:
    description:
      - C(fetched) copies the journal of the gateway.
        A copy that the journal does not continue is kept, and the task fails.
      - C(restored) puts the copy back where the gateway has no journal.
        Where the gateway's continues it, nothing is done; where it has another one, the task fails.
    type: str
    choices: [fetched, restored]
    default: fetched
  begun_anew:
    description:
      - Rename a copy that the journal does not continue, and fetch the journal, for a gateway that was replaced.
        The time is appended to the name of the old copy.
    type: bool
    default: false
attributes:
  check_mode:
    description: Compares, and writes nothing. Whether the gateway takes a copy shows only when it is put back.
    support: full
  diff_mode:
    description: Shows nothing.
    support: none
seealso:
  - module: device_mgmt.gateway.site
"""

EXAMPLES = r"""
- name: Keep the journal
  device_mgmt.gateway.journal:
    gateway: "tower-{{ site }}"
    path: "{{ playbook_dir }}/journals/{{ inventory_hostname }}.journal"

- name: Put it back after the gateway was replaced by one with the same settings
  device_mgmt.gateway.journal:
    gateway: "tower-{{ site }}"
    path: "{{ playbook_dir }}/journals/{{ inventory_hostname }}.journal"
    state: restored
"""

RETURN = r"""
path:
  description: The copy on the controller.
  returned: success
  type: str
renamed:
  description: The new name of the old copy.
  returned: with I(begun_anew), if it was renamed
  type: str
gateway:
  description: The gateway that the journal names.
  returned: success
  type: str
journal:
  description: The journal on the gateway.
  returned: success
  type: str
"""
