#!/usr/bin/python
# MIT licence, the device_mgmt authors.
# What it does is in plugins/action/site.py: nothing of it runs on the gateway.
DOCUMENTATION = r"""
module: site
short_description: Apply a site to a gateway
description:
  - Makes the calls of a site that its gateway has not accepted yet, by the gateway's own C(vorcfg serve).
  - The task fails if a line is refused, not delivered, unknown or left, and if an apply waits that was made before.
    With any I(state), it fails while a line is unknown.
version_added: 1.0.0
author: the device_mgmt authors
extends_documentation_fragment: device_mgmt.gateway.gateway
options:
  state:
    description:
      - C(present) makes what is left to make; needs I(src).
      - C(confirmed) confirms what I(confirm) made, so that it stays. Where nothing waits, nothing is done.
      - C(reverted) reverts it at once. Where the last apply was confirmed, or needed no confirmation, the task fails.
    type: str
    choices: [present, confirmed, reverted]
    default: present
  confirm:
    description:
      - Revert what is made unless it is confirmed within this time, in seconds or as C(2m).
      - The lines are returned as I(waiting), not as I(settled). Confirm from a new connection
        (C(meta) with C(reset_connection)), which shows that the gateway can still be reached.
    type: str
  only:
    description: Only the calls of this family, such as C(ip).
    type: str
  all:
    description:
      - Make every line, whatever the journal says, for a gateway that was reset or replaced.
      - Unknown lines are made, too, whether I(unknown) is C(fail) or C(retry). C(skip) excludes it.
    type: bool
    default: false
  unknown:
    description:
      - What becomes of lines without a verdict, for instance because the connection was lost during their call.
      - C(fail) sends nothing while there is one, unless I(all) makes them; C(retry) makes them again.
      - C(skip) makes the other lines. The task fails nevertheless, because lines are unknown.
    type: str
    choices: [fail, retry, skip]
    default: fail
  accept_permanent:
    description: With I(confirm), make lines that cannot be reverted, too. Without it, nothing is sent if there are any.
    type: bool
    default: false
  resend_secrets:
    description: Make accepted lines with a secret again.
    type: bool
    default: false
attributes:
  check_mode:
    description: Reports what would be made, and sends nothing.
    support: full
  diff_mode:
    description: Shows the values in effect, as far as the journal knows them, and the new ones, without secrets.
    support: full
seealso:
  - module: device_mgmt.gateway.facts
  - module: device_mgmt.gateway.journal
"""

EXAMPLES = r"""
- name: Set up the site, to be confirmed
  device_mgmt.gateway.site:
    src: tower.conf
    vars:
      site: "{{ site }}"
      lan: "{{ lan }}"
    secrets:
      pin: "{{ vault_pin }}"
    confirm: 5m
    accept_permanent: true

- name: Come back
  ansible.builtin.meta: reset_connection

- name: Confirm
  device_mgmt.gateway.site:
    gateway: "tower-{{ site }}"
    state: confirmed

- name: Make what was left after a lost connection
  device_mgmt.gateway.site:
    src: tower.conf
    vars: "{{ tower }}"
    secrets: "{{ vault_tower }}"
    unknown: retry
"""

RETURN = r"""
msg:
  description: What was done, or what is wrong and what to do.
  returned: always
  type: str
  sample: "tower.conf: 4 accepted, 1 sent"
due:
  description: How many lines apply would make now.
  returned: in check mode
  type: int
has_journal:
  description: Whether the gateway has a journal, which the first apply begins.
  returned: in check mode with C(state=present), if vorcfg took the site
  type: bool
gateway:
  description: The gateway that the site names.
  returned: if there is one
  type: str
journal:
  description: Its journal, on the gateway.
  returned: always
  type: str
settled:
  description: Lines that are in effect.
  returned: always
  type: list
  elements: dict
  contains:
    line:
      description: The number of the line; without I(src), a setting has none.
      type: int
    call:
      description: Family and call.
      type: str
    arguments:
      description: Their values by their names; a secret is left out.
      type: dict
    state:
      description: What is known of it, as in a plan, see vorcfg-site(7).
      type: str
    verdict:
      description: What became of its last call, in words.
      type: str
    at:
      description: When that call was made, in UTC.
      type: str
    secret:
      description: Of a line with a secret, C(same), C(changed) or C(not compared); without I(src), only C(true).
      type: str
unknown:
  description: Lines whose outcome is not known.
  returned: always
  type: list
  elements: dict
refused:
  description: Lines that their manager refused, or that were not delivered.
  returned: always
  type: list
  elements: dict
waiting:
  description: Lines that are in effect until they are confirmed or reverted.
  returned: always
  type: list
  elements: dict
left:
  description: Lines that are still to be made; in check mode, those that would be.
  returned: always
  type: list
  elements: dict
confirmation:
  description: What became of the last apply with I(confirm); null if there was none.
  returned: always
  type: dict
  sample: {state: waiting, until: "2026-11-22T20:23:58Z", seconds_left: 60, has_waiter: true, reverted: 0}
reverted:
  description: Calls that were to be reverted, each with its state and the call before it.
  returned: with C(state=reverted)
  type: list
  elements: dict
"""
