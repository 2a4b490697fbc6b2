# What snmptrapd hands to embedded Perl, written in the form in which Zabbix's trap receiver writes it.
use strict;
use warnings;
use POSIX qw(strftime);

sub write_trap
{
    my ($pdu, $bindings) = @_;
    open(my $file, '>>', $ENV{TALVIK_TRAP_FILE}) or return NetSNMP::TrapReceiver::NETSNMPTRAPD_HANDLER_FAIL;
    my ($from) = $pdu->{receivedfrom} =~ /\[(.*?)\]/;
    my $text = strftime('%H:%M:%S %Y/%m/%d', localtime) . " ZBXTRAP $from\nPDU INFO:\n";
    $text .= sprintf("  %-30s %s\n", $_, $pdu->{$_} =~ /^[[:print:]]*$/ ? $pdu->{$_} : '0x' . unpack('H*', $pdu->{$_}))
        for sort keys %$pdu;
    $text .= "VARBINDS:\n" . join('', map { sprintf("  %-30s type=%-2d value=%s\n", $_->[0], $_->[2], $_->[1]) } @$bindings);
    print $file $text;
    close($file);
    return NetSNMP::TrapReceiver::NETSNMPTRAPD_HANDLER_OK;
}

NetSNMP::TrapReceiver::register('all', \&write_trap) or die 'snmptrapd takes no handler in Perl';
