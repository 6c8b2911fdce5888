#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Lists the exported classes and functions that have no contract in their header; there must be none.

usage: contracts.py XML_DIRECTORY (what Doxygen made of docs/Doxyfile)

A class, a structure and a function need a comment. These need none: functions whose name says enough (constructors,
destructors, operators, getters, setters, stream functions and signals), overloads beside one that has a comment,
overrides, whose contract is that of the base class, and private members. Enumerations, enumerators, type aliases and
fields are not checked.
"""
import glob
import re
import sys
import xml.etree.ElementTree as ElementTree

BY_NAME = re.compile(r'(Get|Set|Is|Has|is|has|get|set)[A-Z]|(?:~|operator)|(Save|Restore)\w*(To|From)Stream$|\w+Signal$')


def has_comment(node):
    return any(''.join(part.itertext()).strip()
               for tag in ('briefdescription', 'detaileddescription', 'inbodydescription') for part in node.findall(tag))


def is_getter(member):
    return member.get('const') == 'yes' and not member.findall('param')


def functions_without(compound):
    """The functions of a class or file without a contract, a name once."""
    name = compound.findtext('compoundname')
    functions = [member for member in compound.iter('memberdef')
                 if member.get('kind') in ('function', 'signal', 'slot') and member.get('prot') != 'private']
    told = {member.findtext('name') for member in functions if has_comment(member)}
    for member in functions:
        own = member.findtext('name')
        by_name = BY_NAME.match(own) or own == name.split('::')[-1] or is_getter(member)
        if own not in told and not by_name and member.find('reimplements') is None:
            told.add(own)
            yield member, own if compound.get('kind') == 'file' else f'{name}::{own}'


def main(directory):
    missing = set()
    for path in glob.glob(f'{directory}/*.xml'):
        for compound in ElementTree.parse(path).getroot().findall('compounddef'):
            if compound.get('kind') not in ('class', 'struct', 'file') or compound.get('prot') == 'private':
                continue
            places = functions_without(compound)
            if compound.get('kind') != 'file' and not has_comment(compound):
                missing.add((compound.find('location').get('file'), compound.findtext('compoundname')))
            missing.update((member.find('location').get('file'), name) for member, name in places)
    for file, name in sorted(missing):
        print(f'{file}: {name} has no contract')
    return 1 if missing else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1]))
